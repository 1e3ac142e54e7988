#include "kelo/handlers/http/remoteio/PutRemoteIOAnalogOutput.h"

#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutRemoteIOAnalogOutput::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  KeloResourceAction save(
      tavelabi::CCRUD::Command, "/remoteio/analog/update",
      RemoteIOHandlerHelpers::makeRemoteAnalogOutputResource(std::string(req->body())), info,
      sessionId, req);
  // The guid of the saved object comes back in the answer; it is what the wait reads.
  const tavelabi::Resource answer = tavel->processResourceAction(save);
  const std::string guid = answer.values.at("guid").getStringValue();
  KeloResourceAction poll(tavelabi::CCRUD::Read,
                          std::string(RemoteIOHandlerHelpers::kAnalogPrefix) + guid, info,
                          sessionId, req);
  JsonReplies::replyJson(resp, RemoteIOHandlerHelpers::waitForAnalogSave(poll, tavel));
}

}  // namespace halvor::kelo
