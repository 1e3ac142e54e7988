#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The audio processor under "/orban": its factory and user presets ("/orban/presetList" and
// "/orban/presetList/<name>"), the active preset ("/orban/activePreset/name", whose "set_value"
// asks for another one, and "/orban/activePreset/updated") and the controls of the active preset
// ("/orban/activePreset/controls/<label>", "value" following "set_value"). Every change takes
// the processor a while: a save ("/orban/preset/save"), a delete ("/orban/preset/delete") or a
// control change is applied after the apply delay; an activation first clears "updated", names
// the new preset after the apply delay, and sets "updated" again after the updated delay.
class ProcessorModel : public Model {
 public:
  std::string name() const override { return "processor"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "processor"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  static constexpr const char* kPresetList = "/orban/presetList";
  static constexpr const char* kActiveName = "/orban/activePreset/name";
  static constexpr const char* kActiveUpdated = "/orban/activePreset/updated";
  static constexpr const char* kControls = "/orban/activePreset/controls/";

  // The presets seeded at start, factory ones first.
  static std::vector<tavelabi::Resource> demoPresets();

 private:
  struct Behaviour {
    std::chrono::milliseconds applyDelay{3000};
    std::chrono::milliseconds updatedDelay{2000};
    // Operations that are accepted but never take effect: "save", "delete", "control",
    // "updated" (the flag stays false after an activation).
    std::set<std::string> failing;
  };
  // A save or delete the processor has accepted; `seen` is set by the first tick after it.
  struct PendingChange {
    bool save = true;
    tavelabi::Resource preset;
    std::string presetName;
    std::optional<tavelabi::TimePoint> seen;
  };
  // A control whose "set_value" differs from its "value"; only tick() touches it.
  struct PendingControl {
    int target = 0;
    tavelabi::TimePoint since;
    bool applied = false;
  };
  // An activation in progress; only tick() touches it.
  struct Activation {
    std::string target;
    tavelabi::TimePoint since;
    bool named = false;
  };

  tavelabi::Resource save(tavelabi::ResourceAction& action);
  tavelabi::Resource remove(tavelabi::ResourceAction& action);

  Behaviour behaviour() const;
  std::vector<std::string> presetNames() const;
  std::optional<tavelabi::Resource> preset(const std::string& presetName) const;
  void applyDueChanges(const Behaviour& behaviour, const tavelabi::TimePoint& now);
  void applySave(const tavelabi::Resource& preset);
  void applyDelete(const std::string& presetName);
  void followActivation(const Behaviour& behaviour, const tavelabi::TimePoint& now);
  void followControls(const Behaviour& behaviour, const tavelabi::TimePoint& now);
  void writeList(const std::vector<std::string>& names);
  void update(const std::string& path, const tavelabi::Resource& values);

  // Guards the behaviour and the accepted changes: commands run on callers' threads.
  mutable std::mutex mutex_;
  Behaviour behaviour_;
  std::vector<PendingChange> changes_;
  // Only tick() touches these, on the loop's thread.
  std::optional<Activation> activation_;
  std::map<std::string, PendingControl> controlsPending_;
};

}  // namespace halvor::sim
