#include "kelo/handlers/http/notifications/PostNotificationHandler.h"

#include "kelo/handlers/http/notifications/EmailServerSettingsHelperClass.h"
#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostNotificationHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  const auto body = RequestBodies::message<protobuf::Notification>(req);
  tavelabi::Resource created;
  if (body.has_title()) created.values["title"] = tavelabi::ResourceValue(body.title().value());
  KeloResourceAction create(tavelabi::CCRUD::Command, NotificationHelperClass::kCreateCommand,
                            created, info, sessionId, req);
  const std::string guid = tavel->processResourceAction(create).values.at("guid").getStringValue();
  for (const protobuf::Alarm& alarm : body.alarms()) {
    NotificationHelperClass::sendAddAlarmRequest(req, tavel, info, sessionId, guid,
                                                 alarm.path().value());
  }
  for (const auto& email : body.users()) {
    NotificationHelperClass::sendAddUserEmailRequest(req, tavel, info, sessionId, guid,
                                                     email.value());
  }
  JsonReplies::reply(
      resp, *NotificationHelperClass::getNotificationData(req, tavel, info, sessionId, guid));
}

}  // namespace halvor::kelo
