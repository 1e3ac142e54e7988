#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The SNMP agent under "/snmp": its port, communities, traps switch and trap receivers. The
// agent applies a written "set_value" only after a delay: then "value" becomes "set_value". The
// commands "/snmp/command/newTrapSetting" and "/snmp/command/deleteTrapSetting" add and remove
// receivers ("/snmp/trapSettings/<guid>", listed in "/snmp/trapSettings/list").
class SnmpModel : public Model {
 public:
  std::string name() const override { return "snmp"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "snmp"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  // The resources whose "value" follows "set_value".
  static const std::vector<std::string>& followedPaths();

 private:
  struct Behaviour {
    std::chrono::milliseconds delay{2000};
    bool applying = true;
  };

  tavelabi::Resource newTrapSetting(tavelabi::ResourceAction& action);
  tavelabi::Resource deleteTrapSetting(tavelabi::ResourceAction& action);
  void follow(const std::string& path, const Behaviour& behaviour, const tavelabi::TimePoint& now);
  void update(const std::string& path, const tavelabi::Resource& values);

  // Guards the behaviour and the guid counter: commands run on callers' threads.
  std::mutex mutex_;
  Behaviour behaviour_;
  int nextGuid_ = 2;
  // When each pending "set_value" was first seen; only tick() touches it, on the loop's thread.
  std::map<std::string, std::pair<tavelabi::ResourceValue, tavelabi::TimePoint>> pending_;
};

}  // namespace halvor::sim
