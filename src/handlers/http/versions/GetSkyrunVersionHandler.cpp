#include "kelo/handlers/http/versions/GetSkyrunVersionHandler.h"

#include "halvor/factories/VersionFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSkyrunVersionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  protobuf::HalvorPbFactory2SkyRunVersions factory;
  for (const char* component : {"qcore", "sdpdriver", "proxmox"}) {
    factory.setOverride(component, HostReads::read(req, tavel, info, sessionId,
                                                   std::string("/skyrun/versions/") + component)
                                       .values.at("value"));
  }
  JsonReplies::reply(resp, *factory.build(nullptr));
}

}  // namespace halvor::kelo
