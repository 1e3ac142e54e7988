#include "kelo/handlers/http/notifications/GetNotificationHandler.h"

#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetNotificationHandler::getNotification(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId,
                                             std::string guid) {
  JsonReplies::reply(
      resp, *NotificationHelperClass::getNotificationData(req, tavel, info, sessionId, guid));
}

}  // namespace halvor::kelo
