#include "kelo/handlers/http/time/GetTimeSettingsHandler.h"

#include "kelo/handlers/http/time/TimeSettingsHelper.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetTimeSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                std::string sessionId) {
  JsonReplies::reply(resp,
                     *TimeSettingsHelper::generateTimeSettingsMessage(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
