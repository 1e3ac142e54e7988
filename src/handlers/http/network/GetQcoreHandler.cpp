#include "kelo/handlers/http/network/GetQcoreHandler.h"

#include "halvor/factories/PlatformFactories.h"
#include "kelo/handlers/http/network/NetworkHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetQcoreHandler::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId) {
  KeloResourceAction fetch(tavelabi::CCRUD::Command, NetworkHelperClass::kGetPlatformCommand,
                           tavelabi::Resource(), info, sessionId, req);
  (void)tavel->processResourceAction(fetch);  // its answer is not read
  protobuf::HalvorPbFactory2QCoreSettings factory;
  for (const NetworkHelperClass::Entry& entry : NetworkHelperClass::platformEntries()) {
    const tavelabi::Resource read = HostReads::read(req, tavel, info, sessionId, entry.path);
    const tavelabi::ResourceValue& value = read.values.at("value");
    if (entry.key == "lan1connected") {
      *factory.overrides().mutable_lan1connected() = NetworkHelperClass::connectedFromHost(value);
    } else if (entry.key == "lan2connected") {
      *factory.overrides().mutable_lan2connected() = NetworkHelperClass::connectedFromHost(value);
    } else {
      factory.setOverride(entry.key, value);
    }
  }
  JsonReplies::reply(resp, *factory.build(nullptr));
}

}  // namespace halvor::kelo
