#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Notifications.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// Notifications under the host's "/notification/<guid>": alarms tied to mail addresses. The
// host offers no whole-object write, so a change is a series of single commands.
class NotificationHelperClass {
 public:
  NotificationHelperClass() = delete;

  static constexpr const char* kListPath = "/notifications/list";
  static constexpr const char* kCreateCommand = "/notification/command/create";
  static constexpr const char* kRenameCommand = "/notification/command/rename";
  static constexpr const char* kDeleteCommand = "/notification/command/delete";

  static std::string getNotificationPath(const std::string& guid);

  // The notification with each alarm read live and the addresses, both in key order. A missing
  // key at any level throws std::out_of_range "map::at"; an alarm no longer in the tree fails
  // the read as the host does.
  static std::shared_ptr<protobuf::Notification> getNotificationData(const web::HttpRequestPtr& req,
                                                                     tavelabi::ITavel* tavel,
                                                                     tavelabi::IPluginInfo* info,
                                                                     const std::string& sessionId,
                                                                     const std::string& guid);

  // One command each; the host's answer is dropped.
  static void sendAddUserEmailRequest(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                      tavelabi::IPluginInfo* info, const std::string& sessionId,
                                      const std::string& guid, const std::string& email);
  static void sendRemoveUserEmailRequest(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                         tavelabi::IPluginInfo* info, const std::string& sessionId,
                                         const std::string& guid, const std::string& userGuid);
  static void sendAddAlarmRequest(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                  tavelabi::IPluginInfo* info, const std::string& sessionId,
                                  const std::string& guid, const std::string& alarmPath);
  static void sendRemoveAlarmRequest(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                     tavelabi::IPluginInfo* info, const std::string& sessionId,
                                     const std::string& guid, const std::string& alarmGuid);
};

}  // namespace halvor::kelo
