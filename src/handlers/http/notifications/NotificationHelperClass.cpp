#include "kelo/handlers/http/notifications/NotificationHelperClass.h"

#include <string>

#include "halvor/factories/NotificationFactories.h"
#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

constexpr const char* kPathTemplate = "/notification/<notificationGuid>";

void sendCommand(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                 tavelabi::IPluginInfo* info, const std::string& sessionId,
                 const std::string& command, const std::string& guid, const std::string& key,
                 const std::string& value) {
  tavelabi::Resource resource("guid", guid);
  resource.values[key] = tavelabi::ResourceValue(value);
  KeloResourceAction action(tavelabi::CCRUD::Command, command, resource, info, sessionId, req);
  (void)tavel->processResourceAction(action);
}

}  // namespace

std::string NotificationHelperClass::getNotificationPath(const std::string& guid) {
  // Replaced as plain text, so that the guid goes in as it came ("$" included).
  std::string path = kPathTemplate;
  const std::string placeholder = "<notificationGuid>";
  path.replace(path.find(placeholder), placeholder.size(), guid);
  return path;
}

std::shared_ptr<protobuf::Notification> NotificationHelperClass::getNotificationData(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& guid) {
  const tavelabi::Resource stored =
      HostReads::read(req, tavel, info, sessionId, getNotificationPath(guid));
  protobuf::HalvorPbFactory2Notification factory;
  protobuf::Notification& notification = factory.overrides();
  notification.mutable_guid()->set_value(stored.values.at("guid").getStringValue());
  notification.mutable_title()->set_value(stored.values.at("title").getStringValue());
  for (const auto& [key, link] : stored.values.at("alarms").getMapValue()) {
    const std::string alarmPath = link.getMapValue().at("alarmPath").getStringValue();
    *notification.add_alarms() =
        *AlarmEndpointHelperClass::getCurrentAlarmInfo(req, tavel, info, sessionId, alarmPath);
  }
  for (const auto& [key, link] : stored.values.at("users").getMapValue()) {
    notification.add_users()->set_value(link.getMapValue().at("email").getStringValue());
  }
  return factory.release(nullptr);
}

void NotificationHelperClass::sendAddUserEmailRequest(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& guid, const std::string& email) {
  sendCommand(req, tavel, info, sessionId, "/notification/command/addUser", guid, "email", email);
}

void NotificationHelperClass::sendRemoveUserEmailRequest(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& guid, const std::string& userGuid) {
  sendCommand(req, tavel, info, sessionId, "/notification/command/removeUser", guid,
              "notificationUserGuid", userGuid);
}

void NotificationHelperClass::sendAddAlarmRequest(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& guid, const std::string& alarmPath) {
  sendCommand(req, tavel, info, sessionId, "/notification/command/addAlarm", guid, "alarmPath",
              alarmPath);
}

void NotificationHelperClass::sendRemoveAlarmRequest(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& guid, const std::string& alarmGuid) {
  sendCommand(req, tavel, info, sessionId, "/notification/command/removeAlarm", guid,
              "notificationAlarmGuid", alarmGuid);
}

}  // namespace halvor::kelo
