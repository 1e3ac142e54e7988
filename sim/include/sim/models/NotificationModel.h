#pragma once

#include <mutex>
#include <string>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// Notifications and the mail server. A notification "/notification/<guid>" has "guid", "title",
// "alarms" (link guid -> {"alarmPath"}) and "users" (link guid -> {"email"});
// "/notifications/list" has one key per notification. The commands under
// "/notification/command/" create, rename and delete notifications and add and remove single
// links; "/settings/command/email" stores the given keys in "/settings/emailServer". Nothing is
// mailed. A command that names an unknown notification or link fails as a missing path does.
class NotificationModel : public Model {
 public:
  static constexpr const char* kListPath = "/notifications/list";
  static constexpr const char* kEmailServerPath = "/settings/emailServer";

  std::string name() const override { return "notifications"; }
  std::vector<Command> commands() override;
  void seed() override;

 private:
  tavelabi::Resource create(tavelabi::ResourceAction& action);
  tavelabi::Resource rename(tavelabi::ResourceAction& action);
  tavelabi::Resource remove(tavelabi::ResourceAction& action);
  tavelabi::Resource addUser(tavelabi::ResourceAction& action);
  tavelabi::Resource removeUser(tavelabi::ResourceAction& action);
  tavelabi::Resource addAlarm(tavelabi::ResourceAction& action);
  tavelabi::Resource removeAlarm(tavelabi::ResourceAction& action);
  tavelabi::Resource email(tavelabi::ResourceAction& action);

  // A link added to the map `key` of the notification the action names.
  tavelabi::Resource addLink(tavelabi::ResourceAction& action, const std::string& key,
                             const std::string& field);
  tavelabi::Resource removeLink(tavelabi::ResourceAction& action, const std::string& key,
                                const std::string& guidKey);
  std::string nextGuid(const std::string& prefix);
  tavelabi::Resource stored(const std::string& path);
  void write(tavelabi::CCRUD verb, const std::string& path, const tavelabi::Resource& resource);

  // Guards the guid counter and makes each command's read, change and write one step, since
  // commands run on callers' threads at the same time.
  std::mutex mutex_;
  int counter_ = 0;
};

}  // namespace halvor::sim
