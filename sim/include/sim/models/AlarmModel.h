#pragma once

#include <json/value.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The alarms of the demo transmitter. Each device of DeviceModel::devices() has the alarms of its
// device name, each a resource "/alarms/<name>/<id>/<alarm>" with "label", "path",
// "description", "value" (true while active), "deviceName", "deviceId", "severity" (a name of
// the AlarmSeverity enumeration) and "time" (RFC 3339, the last change). Each device name has
// the list "/alarms/<name>/list" of its alarms' paths; "/system/alarms/active" lists the paths of
// the active ones.
//
// Every few seconds one of a handful of alarms comes or goes: its "value" and "time" are
// updated, then the active list, both as Updates, so that subscribers see a push. The model
// keeps its values in the tree and reads them back there, so that what a fixture or a client
// stored is honoured.
//
// Fixture section "alarms", every key optional:
//   "active":        [path, ...]  the active list as given; the model's alarms get "value" true
//                                 when listed, false otherwise
//   "vanished":      [path, ...]  each path listed in "/alarms/<name>/list" of its second segment
//                                 (added when missing), with no resource: an alarm that went away
//                                 between the list and the read
//   "moving":        bool         false keeps every alarm still (default true)
//   "periodSeconds": whole number the time between two changes (default 6)
//
// Threads: seed, applyFixture and tick all run under the host's lock of its models, so the
// model's own members need no lock.
class AlarmModel : public Model {
 public:
  static constexpr const char* kActivePath = "/system/alarms/active";

  struct Definition {
    const char* deviceName;
    const char* key;
    const char* label;
    const char* description;
    const char* severity;
    bool activeAtStart;  // for the device id kActiveAtStartId
  };

  static const std::vector<Definition>& definitions();
  // "/alarms/<deviceName>/list".
  static std::string listPath(const std::string& deviceName);
  // "/alarms/<deviceName>/<deviceId>/<key>".
  static std::string alarmPath(const std::string& deviceName, const std::string& deviceId,
                               const std::string& key);
  // Every alarm path, in the order of the lists.
  static std::vector<std::string> alarmPaths();
  // The alarms that come and go, in the order of their turns.
  static const std::vector<std::string>& movingAlarms();

  std::string name() const override { return "alarms"; }
  std::string fixtureSection() const override { return "alarms"; }
  // std::invalid_argument for a section that does not have the form above.
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

 private:
  void seedAlarms(const std::string& time);
  void applySettings();
  void setActiveList(const std::vector<std::string>& paths);
  void makeVanish(const std::string& path);
  bool toggle(const std::string& path);
  void updateActiveList(const std::string& path, bool active);
  std::vector<std::string> storedActiveList() const;
  void write(const std::string& path, const tavelabi::Resource& resource);

  std::optional<std::vector<std::string>> active_;
  std::vector<std::string> vanished_;
  bool moving_ = true;
  std::chrono::milliseconds period_ = std::chrono::seconds(6);
  bool seeded_ = false;
  bool started_ = false;
  tavelabi::TimePoint lastChange_{};
  std::size_t nextTurn_ = 0;
};

}  // namespace halvor::sim
