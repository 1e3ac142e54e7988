#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::sim {

// The transmitter's broadcast presets: a dozen presets with their sections (name, frequency,
// power, mode, audio, RDS), the one on air ("/presets/active/details"), the list that the
// front end watches ("/presets/list"), the layout of the preset pages ("/presets/layout", a JSON
// text) and the hardware's preset errors ("/presets/hardwareErrors").
//
// Load, create, update, delete and activate are actions the hardware carries out: the first
// command (with "guid", or the preset for an update) starts the action and answers at once; the
// client then sends the same command with "checkProgress" = true until an answer holds
// "actionCompleted" (with the preset's "guid" and "value") or "errorOccurred" and
// "errorMessage". An action completes on the poll after `pollsToComplete` unfinished ones. The
// poll carries no guid: the model finds the action by session and command path, so one session
// runs one action of a kind at a time. An action that fails while polled also adds its text to
// the hardware errors.
class PresetModel : public Model {
 public:
  std::string name() const override { return "presets"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "presets"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;

  // The seeded presets, guid -> sections.
  static std::map<std::string, tavelabi::ResourceValue::Map> demoPresets();

 private:
  // One action under way.
  struct Pending {
    std::string guid;
    tavelabi::ResourceValue::Map sections;  // the preset of an update
    int pollsLeft = 0;
  };

  tavelabi::Resource generateList(tavelabi::ResourceAction& action);
  tavelabi::Resource load(tavelabi::ResourceAction& action);
  tavelabi::Resource create(tavelabi::ResourceAction& action);
  tavelabi::Resource updatePreset(tavelabi::ResourceAction& action);
  tavelabi::Resource deletePreset(tavelabi::ResourceAction& action);
  tavelabi::Resource activate(tavelabi::ResourceAction& action);

  // The common course of an action: start, or poll and finish with `finish` (under the lock).
  using Finish = tavelabi::Resource (PresetModel::*)(const Pending&);
  tavelabi::Resource step(tavelabi::ResourceAction& action, const std::string& kind, Finish finish,
                          bool guidMustExist);
  tavelabi::Resource finishLoad(const Pending& pending);
  tavelabi::Resource finishCreate(const Pending& pending);
  tavelabi::Resource finishUpdate(const Pending& pending);
  tavelabi::Resource finishDelete(const Pending& pending);
  tavelabi::Resource finishActivate(const Pending& pending);

  tavelabi::Resource presetAnswer(const std::string& guid) const;
  tavelabi::Resource failure(const std::string& text);
  void publishList();
  void publishActive(const std::string& guid);
  void reportHardwareError(const std::string& text);
  tavelabi::ResourceValue listValue() const;

  // Guards everything below: commands run on callers' threads.
  mutable std::mutex mutex_;
  std::map<std::string, tavelabi::ResourceValue::Map> presets_;
  std::map<std::string, Pending> pending_;  // by session and command
  int pollsToComplete_ = 3;
  // Guids whose actions fail at the first answer, and on the last poll.
  std::set<std::string> failAtStart_;
  std::set<std::string> failWhilePolling_;
  int nextGuid_ = 13;
  // Serialises the read and write of the hardware errors; never held with mutex_.
  std::mutex errorsMutex_;
};

}  // namespace halvor::sim
