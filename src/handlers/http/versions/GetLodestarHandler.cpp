#include "kelo/handlers/http/versions/GetLodestarHandler.h"

#include "kelo/handlers/http/versions/LodestarSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetLodestarHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  JsonReplies::reply(
      resp, *LodestarSettingsHelperClass::getLodestarSettings(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
