#include "kelo/handlers/http/graphics/GetAmPmCorrectionHandler.h"

#include "kelo/handlers/http/graphics/AmPmCorrectionHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAmPmCorrectionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  JsonReplies::reply(
      resp, *AmPmCorrectionHelperClass::getAmPmCorrection(req, tavel, info, sessionId, false));
}

}  // namespace halvor::kelo
