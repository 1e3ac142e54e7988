#include "kelo/handlers/http/notifications/GetNotificationListHandler.h"

#include "kelo/handlers/http/notifications/EmailServerSettingsHelperClass.h"
#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetNotificationListHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                    web::HttpResponsePtr& resp,
                                                    tavelabi::ITavel* tavel,
                                                    tavelabi::IPluginInfo* info,
                                                    std::string sessionId) {
  const tavelabi::Resource list =
      HostReads::read(req, tavel, info, sessionId, NotificationHelperClass::kListPath);
  protobuf::NotificationList notifications;
  for (const auto& [guid, unused] : list.values) {
    *notifications.add_notifications() =
        *NotificationHelperClass::getNotificationData(req, tavel, info, sessionId, guid);
  }
  JsonReplies::reply(resp, notifications);
}

}  // namespace halvor::kelo
