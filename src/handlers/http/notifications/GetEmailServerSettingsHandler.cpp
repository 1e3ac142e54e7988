#include "kelo/handlers/http/notifications/GetEmailServerSettingsHandler.h"

#include "kelo/handlers/http/notifications/EmailServerSettingsHelperClass.h"
#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetEmailServerSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                       web::HttpResponsePtr& resp,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* info,
                                                       std::string sessionId) {
  JsonReplies::replyJson(resp, EmailServerSettingsHelperClass::getEmailServerSettingsData(
                                   req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
