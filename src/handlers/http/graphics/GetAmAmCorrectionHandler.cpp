#include "kelo/handlers/http/graphics/GetAmAmCorrectionHandler.h"

#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAmAmCorrectionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  JsonReplies::reply(
      resp, *AmAmCorrectionHelperClass::getAmAmCorrection(req, tavel, info, sessionId, false));
}

}  // namespace halvor::kelo
