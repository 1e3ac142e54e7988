#include "kelo/handlers/ws/WsAmAmCorrection.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsAmAmCorrection::messageGenerator(const web::HttpRequestPtr& req,
                                        tavelabi::Resource& /*resource*/, std::string sessionId,
                                        std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  WsMessages::serialize(*AmAmCorrectionHelperClass::getAmAmCorrection(
                            req, plugin.tavel, plugin.pluginInfo, sessionId, kBypassActivity),
                        message);
}

}  // namespace halvor::kelo
