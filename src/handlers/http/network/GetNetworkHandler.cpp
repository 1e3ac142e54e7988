#include "kelo/handlers/http/network/GetNetworkHandler.h"

#include "halvor/factories/PlatformFactories.h"
#include "kelo/handlers/http/network/NetworkHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetNetworkHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                           web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                           tavelabi::IPluginInfo* info, std::string sessionId) {
  protobuf::HalvorPbFactory2NetworkSettings factory;
  for (const NetworkHelperClass::Entry& entry : NetworkHelperClass::controllerReads()) {
    factory.setOverride(
        entry.key, HostReads::read(req, tavel, info, sessionId, entry.path).values.at("value"));
  }
  JsonReplies::reply(resp, *factory.build(nullptr));
}

}  // namespace halvor::kelo
