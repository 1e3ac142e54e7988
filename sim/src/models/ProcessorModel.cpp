#include "sim/models/ProcessorModel.h"

#include <json/value.h>

#include <algorithm>
#include <stdexcept>

#include "sim/SimTavel.h"
#include "sim/models/FixtureValues.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

// The flags of a preset, in the order the plug-in's message has them.
const std::vector<std::string>& flagKeys() {
  static const std::vector<std::string> keys{"isFactory",
                                             "isLessMoreAvailable",
                                             "isLessMoreUnvailable",
                                             "isLowLatency",
                                             "isModifiable",
                                             "isMultiband",
                                             "isTwoband",
                                             "isUser"};
  return keys;
}

Resource presetResource(const std::string& name, bool factory, bool multiband, bool lowLatency) {
  Resource preset("name", ResourceValue(name));
  preset.values["isFactory"] = ResourceValue(factory);
  preset.values["isUser"] = ResourceValue(!factory);
  preset.values["isModifiable"] = ResourceValue(!factory);
  preset.values["isMultiband"] = ResourceValue(multiband);
  preset.values["isTwoband"] = ResourceValue(!multiband);
  preset.values["isLowLatency"] = ResourceValue(lowLatency);
  // The less-more adjustment exists for the multiband presets only.
  preset.values["isLessMoreAvailable"] = ResourceValue(multiband);
  preset.values["isLessMoreUnvailable"] = ResourceValue(!multiband);
  return preset;
}

Resource control(const std::string& label, int value, int minValue, int maxValue) {
  Resource resource("label", ResourceValue(label));
  resource.values["value"] = ResourceValue(value);
  resource.values["set_value"] = ResourceValue(value);
  resource.values["minValue"] = ResourceValue(minValue);
  resource.values["maxValue"] = ResourceValue(maxValue);
  return resource;
}

bool isText(const Resource& resource, const std::string& key) {
  const auto found = resource.values.find(key);
  return found != resource.values.end() && found->second.getType() == ResourceValueType::STRING;
}

bool isInteger(const Resource& resource, const std::string& key) {
  const auto found = resource.values.find(key);
  return found != resource.values.end() && found->second.getType() == ResourceValueType::INT32;
}

bool flagOf(const Resource& resource, const std::string& key) {
  const auto found = resource.values.find(key);
  return found != resource.values.end() && found->second.getType() == ResourceValueType::BOOL &&
         found->second.getBoolValue();
}

}  // namespace

std::vector<Resource> ProcessorModel::demoPresets() {
  return {presetResource("Factory Balanced", true, true, false),
          presetResource("Factory Speech", true, false, false),
          presetResource("Factory Dense", true, true, false),
          presetResource("Factory Gentle", true, false, false),
          presetResource("Factory Low Latency", true, true, true),
          presetResource("Morning Show", false, true, false),
          presetResource("Night Jazz", false, false, false)};
}

std::vector<Command> ProcessorModel::commands() {
  return {{"/orban/preset/save", bind(&ProcessorModel::save)},
          {"/orban/preset/delete", bind(&ProcessorModel::remove)}};
}

void ProcessorModel::applyFixture(const Json::Value& section) {
  FixtureValues::requireObject(section, "processor");
  std::lock_guard lock(mutex_);
  if (section.isMember("applyDelayMs")) {
    behaviour_.applyDelay = FixtureValues::delay(section, "processor", "applyDelayMs");
  }
  if (section.isMember("updatedDelayMs")) {
    behaviour_.updatedDelay = FixtureValues::delay(section, "processor", "updatedDelayMs");
  }
  if (section.isMember("failing")) {
    const Json::Value& failing = section["failing"];
    static const std::set<std::string> kKnown{"save", "delete", "control", "updated"};
    if (!failing.isArray()) throw std::invalid_argument("processor.failing: a list of operations");
    behaviour_.failing.clear();
    for (const Json::Value& operation : failing) {
      if (!operation.isString() || kKnown.count(operation.asString()) == 0) {
        throw std::invalid_argument(
            "processor.failing: each one of \"save\", \"delete\", \"control\", \"updated\"");
      }
      behaviour_.failing.insert(operation.asString());
    }
  }
}

void ProcessorModel::seed() {
  std::vector<std::string> names;
  for (const Resource& preset : demoPresets()) {
    const std::string presetName = preset.values.at("name").getStringValue();
    names.push_back(presetName);
    host().createIfAbsent(std::string(kPresetList) + "/" + presetName, preset);
  }
  host().createIfAbsent(kPresetList, Resource(ResourceValue(names)));
  host().createIfAbsent(kActiveName, demoPresets().front());
  host().createIfAbsent(kActiveUpdated, Resource(ResourceValue(true)));
  host().createIfAbsent(std::string(kControls) + "Bass", control("Bass", 0, -10, 10));
  host().createIfAbsent(std::string(kControls) + "Brilliance", control("Brilliance", 2, -10, 10));
  host().createIfAbsent(std::string(kControls) + "Density", control("Density", 5, 0, 10));
  host().createIfAbsent(std::string(kControls) + "Presence", control("Presence", 1, -10, 10));
}

void ProcessorModel::tick(const tavelabi::TimePoint& now) {
  const Behaviour current = behaviour();
  applyDueChanges(current, now);
  followActivation(current, now);
  followControls(current, now);
}

// A preset to save is a map with a "name" that can stand in a path, and flags that are flags.
// The processor keeps its factory presets as they are.
Resource ProcessorModel::save(ResourceAction& action) {
  const auto value = action.resource.values.find("value");
  if (value == action.resource.values.end() ||
      value->second.getType() != ResourceValueType::MAP_VALUE) {
    throw std::invalid_argument("A preset to save is a map under \"value\"");
  }
  Resource preset;
  preset.values = value->second.getMapValue();
  if (!isText(preset, "name") || preset.values.at("name").getStringValue().empty() ||
      preset.values.at("name").getStringValue().find('/') != std::string::npos) {
    throw std::invalid_argument("A preset needs a name, without \"/\"");
  }
  for (const std::string& key : flagKeys()) {
    const auto flag = preset.values.find(key);
    if (flag != preset.values.end() && flag->second.getType() != ResourceValueType::BOOL) {
      throw std::invalid_argument("The preset's " + key + " is true or false");
    }
  }
  const std::string presetName = preset.values.at("name").getStringValue();
  const std::optional<Resource> stored = this->preset(presetName);
  if (stored && flagOf(*stored, "isFactory")) {
    throw std::invalid_argument("The factory preset " + presetName + " cannot be changed");
  }
  std::lock_guard lock(mutex_);
  changes_.push_back({true, preset, presetName, std::nullopt});
  return Resource();
}

// Only a listed preset can be deleted. The processor accepts the delete of a factory preset or
// of the active one, and keeps it.
Resource ProcessorModel::remove(ResourceAction& action) {
  const auto value = action.resource.values.find("value");
  if (value == action.resource.values.end() ||
      value->second.getType() != ResourceValueType::STRING) {
    throw std::invalid_argument("The preset to delete is a name under \"value\"");
  }
  const std::string presetName = value->second.getStringValue();
  const std::vector<std::string> names = presetNames();
  if (std::find(names.begin(), names.end(), presetName) == names.end()) {
    throw tavelabi::NonExistentResourcePathException("No preset " + presetName);
  }
  std::lock_guard lock(mutex_);
  changes_.push_back({false, Resource(), presetName, std::nullopt});
  return Resource();
}

ProcessorModel::Behaviour ProcessorModel::behaviour() const {
  std::lock_guard lock(mutex_);
  return behaviour_;
}

std::vector<std::string> ProcessorModel::presetNames() const {
  std::vector<std::string> names;
  const std::optional<Resource> list = host().peek(kPresetList);
  if (!list) return names;
  const auto value = list->values.find("value");
  if (value == list->values.end() || value->second.getType() != ResourceValueType::LIST_VALUE) {
    return names;
  }
  for (const ResourceValue& entry : value->second.getListValue()) {
    if (entry.getType() == ResourceValueType::STRING) names.push_back(entry.getStringValue());
  }
  return names;
}

std::optional<Resource> ProcessorModel::preset(const std::string& presetName) const {
  return host().peek(std::string(kPresetList) + "/" + presetName);
}

// Changes are applied in the order they were accepted, each once it has waited the delay.
void ProcessorModel::applyDueChanges(const Behaviour& behaviour, const tavelabi::TimePoint& now) {
  std::vector<PendingChange> due;
  {
    std::lock_guard lock(mutex_);
    for (PendingChange& change : changes_) {
      if (!change.seen) change.seen = now;
    }
    while (!changes_.empty() && now - *changes_.front().seen >= behaviour.applyDelay) {
      due.push_back(changes_.front());
      changes_.erase(changes_.begin());
    }
  }
  for (const PendingChange& change : due) {
    if (change.save && behaviour.failing.count("save") == 0) applySave(change.preset);
    if (!change.save && behaviour.failing.count("delete") == 0) applyDelete(change.presetName);
  }
}

// A saved preset is a user preset; the flags it was not given are those of a two-band preset.
void ProcessorModel::applySave(const Resource& given) {
  const std::string presetName = given.values.at("name").getStringValue();
  Resource preset = presetResource(presetName, false, false, false);
  for (const auto& [key, value] : given.values) preset.values[key] = value;
  preset.values["isFactory"] = ResourceValue(false);
  preset.values["isUser"] = ResourceValue(true);
  preset.values["isModifiable"] = ResourceValue(true);
  ResourceAction create(CCRUD::Create, std::string(kPresetList) + "/" + presetName, preset, nullptr,
                        "");
  host().processInternalAction(create);
  std::vector<std::string> names = presetNames();
  if (std::find(names.begin(), names.end(), presetName) == names.end()) {
    names.push_back(presetName);
    writeList(names);
  }
}

void ProcessorModel::applyDelete(const std::string& presetName) {
  const std::optional<Resource> stored = preset(presetName);
  const std::optional<Resource> active = host().peek(kActiveName);
  const bool isActive =
      active && isText(*active, "name") && active->values.at("name").getStringValue() == presetName;
  if ((stored && flagOf(*stored, "isFactory")) || isActive) return;
  if (stored) {
    ResourceAction erase(CCRUD::Delete, std::string(kPresetList) + "/" + presetName, nullptr, "");
    host().processInternalAction(erase);
  }
  std::vector<std::string> names = presetNames();
  names.erase(std::remove(names.begin(), names.end(), presetName), names.end());
  writeList(names);
}

// A new "set_value" starts an activation (a later one replaces it): "updated" goes false, the
// preset is named after the apply delay, "updated" comes back after the updated delay. A name
// that is no preset is refused: "set_value" goes back to the active name.
void ProcessorModel::followActivation(const Behaviour& behaviour, const tavelabi::TimePoint& now) {
  const std::optional<Resource> active = host().peek(kActiveName);
  if (!active || !isText(*active, "set_value")) return;
  const std::string target = active->values.at("set_value").getStringValue();
  const std::string current =
      isText(*active, "name") ? active->values.at("name").getStringValue() : std::string();
  if (!activation_ || activation_->target != target) {
    if (target == current) {
      // Asked back for the preset it runs while another was coming: it stays, and is ready.
      if (activation_) update(kActiveUpdated, Resource(ResourceValue(true)));
      activation_.reset();
      return;
    }
    const std::optional<Resource> preset = this->preset(target);
    if (!preset) {
      activation_.reset();
      update(kActiveName, Resource("set_value", ResourceValue(current)));
      return;
    }
    activation_ = Activation{target, now, false};
    update(kActiveUpdated, Resource(ResourceValue(false)));
    return;
  }
  if (!activation_->named) {
    if (now - activation_->since < behaviour.applyDelay) return;
    const std::optional<Resource> preset = this->preset(target);
    if (preset) update(kActiveName, *preset);
    activation_->named = true;
    activation_->since = now;
    return;
  }
  if (now - activation_->since < behaviour.updatedDelay) return;
  if (behaviour.failing.count("updated") == 0)
    update(kActiveUpdated, Resource(ResourceValue(true)));
  activation_.reset();
}

// A control takes its "set_value" after the apply delay, held within its limits: a value out of
// range leaves "value" at the nearest limit, different from what was asked.
void ProcessorModel::followControls(const Behaviour& behaviour, const tavelabi::TimePoint& now) {
  for (const std::string& path : host().listPaths(std::string(kControls) + "*")) {
    const std::optional<Resource> stored = host().peek(path);
    if (!stored || !isInteger(*stored, "set_value") || !isInteger(*stored, "value")) continue;
    const int target = stored->values.at("set_value").getIntValue();
    if (stored->values.at("value").getIntValue() == target) {
      controlsPending_.erase(path);
      continue;
    }
    auto pending = controlsPending_.find(path);
    if (pending == controlsPending_.end() || pending->second.target != target) {
      controlsPending_[path] = PendingControl{target, now, false};
      continue;
    }
    // Applied once per asked-for value, when it has waited the delay.
    if (pending->second.applied || now - pending->second.since < behaviour.applyDelay) continue;
    pending->second.applied = true;
    if (behaviour.failing.count("control") != 0) continue;
    int value = target;
    if (isInteger(*stored, "minValue")) {
      value = std::max(value, stored->values.at("minValue").getIntValue());
    }
    if (isInteger(*stored, "maxValue")) {
      value = std::min(value, stored->values.at("maxValue").getIntValue());
    }
    update(path, Resource(ResourceValue(value)));
  }
}

void ProcessorModel::writeList(const std::vector<std::string>& names) {
  update(kPresetList, Resource(ResourceValue(names)));
}

void ProcessorModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
