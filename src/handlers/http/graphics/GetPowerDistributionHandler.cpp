#include "kelo/handlers/http/graphics/GetPowerDistributionHandler.h"

#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPowerDistributionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                     web::HttpResponsePtr& resp,
                                                     tavelabi::ITavel* tavel,
                                                     tavelabi::IPluginInfo* info,
                                                     std::string sessionId) {
  JsonReplies::reply(resp, *PowerDistributionHelperClass::getPowerDistribution(req, tavel, info,
                                                                               sessionId, false));
}

}  // namespace halvor::kelo
