#include "kelo/handlers/http/graphics/GetEqFrequencyResponseHandler.h"

#include "kelo/handlers/http/graphics/EqFrequencyResponseHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetEqFrequencyResponseHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                       web::HttpResponsePtr& resp,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* info,
                                                       std::string sessionId) {
  JsonReplies::reply(resp, *EqFrequencyResponseHelperClass::getEqFrequencyResponse(
                               req, tavel, info, sessionId, false));
}

}  // namespace halvor::kelo
