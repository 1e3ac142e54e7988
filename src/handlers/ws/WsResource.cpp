#include "kelo/handlers/ws/WsResource.h"

#include <unordered_map>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/EdUrlParser.h"
#include "kelo/common/MessageBytes.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

namespace {

// A read that the host must not count as user activity, so that pushes do not keep an idle
// session alive.
tavelabi::Resource bypassActivityTimer() {
  return tavelabi::Resource("byPassSessionActivityTimerUpdate", tavelabi::ResourceValue(true));
}

}  // namespace

void WsResource::initialSetupAndMessage(const web::HttpRequestPtr& req,
                                        const web::WebSocketConnectionPtr& conn,
                                        std::string sessionId) {
  std::unordered_map<std::string, std::string> parameters;
  EdUrlParser::parseKeyValueMap(&parameters, req->query(), true);
  auto found = parameters.find("path");
  if (found == parameters.end()) {
    throw RequestMissingQueryParameter("path");
  }
  const std::string path = EdUrlParser::urlDecode(found->second);

  WebKeloInterface* plugin = keloInterface();
  KeloResourceAction read(tavelabi::CCRUD::Read, path, bypassActivityTimer(), plugin->pluginInfo,
                          sessionId, req);
  tavelabi::Resource answer = plugin->tavel->processResourceAction(read);

  std::string message;
  messageGenerator(req, answer, sessionId, message, path);
  conn->send(message, web::WebSocketMessageType::Binary);
  listenerManager()->addListenerAndClient(req, conn, &WsResource::messageGenerator, path,
                                          sessionId);
}

void WsResource::messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                                  std::string sessionId, std::string& message,
                                  const std::string& path) {
  WebKeloInterface* plugin = keloInterface();
  // The session check: a dead session throws here. The answer is not needed.
  KeloResourceAction read(tavelabi::CCRUD::Read, path, bypassActivityTimer(), plugin->pluginInfo,
                          sessionId, req);
  plugin->tavel->processResourceAction(read);

  tavelabi::Resource copy = resource;
  const protobuf::Resource converted = ResourceConverter::toHalvorPbResource(copy);
  message = MessageBytes::of(converted);
}

}  // namespace halvor::kelo
