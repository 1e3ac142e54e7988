#include "kelo/handlers/http/notifications/PutNotificationHandler.h"

#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutNotificationHandler::putNotification(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId,
                                             std::string guid) {
  const auto body = RequestBodies::message<protobuf::Notification>(req);
  const tavelabi::Resource stored = HostReads::read(
      req, tavel, info, sessionId, NotificationHelperClass::getNotificationPath(guid));
  const std::string title = body.title().value();
  if (stored.values.at("title").getStringValue() != title) {
    tavelabi::Resource rename("guid", guid);
    rename.values["title"] = tavelabi::ResourceValue(title);
    KeloResourceAction command(tavelabi::CCRUD::Command, NotificationHelperClass::kRenameCommand,
                               rename, info, sessionId, req);
    (void)tavel->processResourceAction(command);
  }
  for (const auto& [userGuid, unused] : stored.values.at("users").getMapValue()) {
    NotificationHelperClass::sendRemoveUserEmailRequest(req, tavel, info, sessionId, guid,
                                                        userGuid);
  }
  for (const auto& email : body.users()) {
    NotificationHelperClass::sendAddUserEmailRequest(req, tavel, info, sessionId, guid,
                                                     email.value());
  }
  for (const auto& [alarmGuid, unused] : stored.values.at("alarms").getMapValue()) {
    NotificationHelperClass::sendRemoveAlarmRequest(req, tavel, info, sessionId, guid, alarmGuid);
  }
  for (const protobuf::Alarm& alarm : body.alarms()) {
    NotificationHelperClass::sendAddAlarmRequest(req, tavel, info, sessionId, guid,
                                                 alarm.path().value());
  }
  JsonReplies::reply(
      resp, *NotificationHelperClass::getNotificationData(req, tavel, info, sessionId, guid));
}

}  // namespace halvor::kelo
