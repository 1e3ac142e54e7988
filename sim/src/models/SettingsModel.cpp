#include "sim/models/SettingsModel.h"

#include <json/value.h>

#include <algorithm>
#include <stdexcept>

#include "sim/SimTavel.h"
#include "sim/models/FixtureValues.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

struct SettingDefinition {
  std::string page;
  std::string path;
  std::string label;
  std::string type;
  Resource resource;        // "value" and the page's keys: units, limits, ...
  std::string monitor;      // the reading beside it, "" for none
  Resource monitorReading;  // the reading's resource
  ResourceValue options;    // the choices of a SINGLE_SELECT
  std::string dependentLabel;
  ResourceValue dependentValidation;
};

Resource with(Resource resource, const std::map<std::string, ResourceValue>& extra) {
  for (const auto& [key, value] : extra) resource.values[key] = value;
  return resource;
}

// The guid of a setting: its path in one URL segment.
std::string guidOf(const std::string& path) {
  std::string guid = path.substr(1);
  std::replace(guid.begin(), guid.end(), '/', '-');
  return guid;
}

const std::vector<SettingDefinition>& definitions() {
  static const std::vector<SettingDefinition> all{
      {"rfOutput", "/settings/rf/outputPower", "Output power", "MONITORED",
       with(Resource(ResourceValue(1000)), {{"units", "W"},
                                            {"minValue", 0},
                                            {"maxValue", 1100},
                                            {"step", 10.0},
                                            {"required", true},
                                            {"digitsToDisplay", 0}}),
       "/settings/monitors/rf/forwardPower",
       with(Resource(ResourceValue(998.5)), {{"units", "W"}, {"digitsToDisplay", 1}}),
       ResourceValue(), "", ResourceValue()},
      {"rfOutput", "/settings/rf/on", "RF on", "BASIC_BOOLEAN", Resource(ResourceValue(true)), "",
       Resource(), ResourceValue(), "", ResourceValue()},
      {"rfOutput", "/settings/rf/frequency", "Frequency", "MONITORED_CALIBRATION",
       with(Resource(ResourceValue(9850)), {{"units", "MHz"},
                                            {"scale", 100},
                                            {"toFixedDigits", 2},
                                            {"minValue", 8750},
                                            {"maxValue", 10800},
                                            {"step", 5.0}}),
       "/settings/monitors/rf/frequency",
       with(Resource(ResourceValue(9850)), {{"units", "MHz"}, {"scale", 100}}), ResourceValue(), "",
       ResourceValue()},
      {"audio", "/settings/audio/inputSource", "Input source", "SINGLE_SELECT",
       Resource(ResourceValue("analog")), "", Resource(),
       ResourceValue(ResourceValue::Map{
           {"analog", "Analog"}, {"aes1", "AES 1"}, {"aes2", "AES 2"}, {"player", "Audio player"}}),
       "", ResourceValue()},
      {"audio", "/settings/audio/inputGain", "Input gain", "BASIC",
       with(Resource(ResourceValue(0.0)), {{"units", "dB"}, {"step", 0.5}, {"digitsToDisplay", 1}}),
       "", Resource(), ResourceValue(), "Input source",
       ResourceValue(ResourceValue::Map{
           {"analog", ResourceValue(ResourceValue::Map{{"minValue", -12.0}, {"maxValue", 12.0}})},
           {"aes1", ResourceValue(ResourceValue::Map{{"minValue", -6.0}, {"maxValue", 6.0}})}})},
      {"audio", "/settings/audio/preEmphasis", "Pre-emphasis", "SINGLE_SELECT",
       Resource(ResourceValue("50us")), "", Resource(),
       ResourceValue(ResourceValue::Map{{"off", "Off"}, {"50us", "50 us"}, {"75us", "75 us"}}), "",
       ResourceValue()},
      {"rds", "/settings/rds/enabled", "RDS on", "BASIC_BOOLEAN", Resource(ResourceValue(true)), "",
       Resource(), ResourceValue(), "", ResourceValue()},
      {"rds", "/settings/rds/ps", "Programme service name", "BASIC",
       with(Resource(ResourceValue("KELO FM")), {{"minLength", 1}, {"maxLength", 8}}), "",
       Resource(), ResourceValue(), "", ResourceValue()},
      {"rds", "/settings/rds/pi", "Programme identification", "BASIC",
       with(Resource(ResourceValue("C201")), {{"pattern", "^[0-9A-F]{4}$"}, {"required", true}}),
       "", Resource(), ResourceValue(), "", ResourceValue()},
      {"network", "/settings/network/dhcp", "DHCP", "BASIC_BOOLEAN", Resource(ResourceValue(false)),
       "", Resource(), ResourceValue(), "", ResourceValue()},
      {"network", "/settings/network/ipAddress", "IP address", "BASIC",
       with(Resource(ResourceValue("192.168.1.10")),
            {{"pattern", "^([0-9]{1,3}\\.){3}[0-9]{1,3}$"}, {"required", true}}),
       "", Resource(), ResourceValue(), "", ResourceValue()},
      {"network", "/settings/network/hostname", "Host name", "READ_ONLY",
       Resource(ResourceValue("tx-1")), "", Resource(), ResourceValue(), "", ResourceValue()},
  };
  return all;
}

ResourceValue entryOf(const SettingDefinition& setting) {
  ResourceValue::Map entry{{"settingResource", setting.path},
                           {"monitorResource", setting.monitor},
                           {"label", setting.label},
                           {"type", setting.type},
                           {"dependentValidationLabel", setting.dependentLabel}};
  if (!setting.dependentLabel.empty()) entry["dependentValidation"] = setting.dependentValidation;
  if (setting.type == "SINGLE_SELECT") entry["options"] = setting.options;
  return ResourceValue(entry);
}

}  // namespace

const std::vector<SettingsModel::Page>& SettingsModel::pages() {
  static const std::vector<Page> all{{"rfOutput", "RF output", "rf"},
                                     {"audio", "Audio", "audio"},
                                     {"rds", "RDS", "rds"},
                                     {"network", "Network", "network"}};
  return all;
}

std::vector<std::string> SettingsModel::settingPaths() {
  std::vector<std::string> paths;
  for (const SettingDefinition& setting : definitions()) paths.push_back(setting.path);
  return paths;
}

Resource SettingsModel::collection(const Page& page) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  ResourceValue::List entries;
  for (const SettingDefinition& setting : definitions()) {
    if (setting.page == page.name) entries.push_back(entryOf(setting));
  }
  list.setList(entries);
  return Resource("settings", list);
}

Resource SettingsModel::link(const Page& page) {
  Resource resource("includeAsDynamicSetting", ResourceValue(true));
  resource.values["label"] = ResourceValue(page.label);
  resource.values["icon"] = ResourceValue(page.icon);
  resource.values["collectionName"] = ResourceValue(page.name);
  return resource;
}

void SettingsModel::applyFixture(const Json::Value& section) {
  FixtureValues::requireObject(section, "settings");
  std::lock_guard lock(mutex_);
  if (section.isMember("transitionMs")) {
    behaviour_.duration = FixtureValues::duration(section, "settings", "transitionMs");
  }
  const Json::Value& failures = section["failures"];
  if (!failures.isNull() && !failures.isObject()) {
    throw std::invalid_argument("settings.failures: an object from path to message");
  }
  for (const std::string& path : failures.getMemberNames()) {
    if (!failures[path].isString()) {
      throw std::invalid_argument("settings.failures." + path + ": a message");
    }
    behaviour_.failures[path] = failures[path].asString();
  }
}

void SettingsModel::seed() {
  for (const Page& page : pages()) {
    host().createIfAbsent("/collection/" + page.name, collection(page));
    // Listed by "/collection/**/*", which takes at least two segments below "/collection".
    host().createIfAbsent("/collection/" + page.name + "/link", link(page));
  }
  for (const SettingDefinition& setting : definitions()) {
    Resource resource = setting.resource;
    resource.values["guid"] = ResourceValue(guidOf(setting.path));
    resource.values["path"] = ResourceValue(setting.path);
    host().createIfAbsent(setting.path, resource);
    if (!setting.monitor.empty()) host().createIfAbsent(setting.monitor, setting.monitorReading);
  }
}

void SettingsModel::tick(const tavelabi::TimePoint& now) {
  Behaviour behaviour;
  {
    std::lock_guard lock(mutex_);
    behaviour = behaviour_;
  }
  for (const std::string& path : settingPaths()) follow(path, behaviour, now);
}

// A "set_value" other than "value" starts a transition, or restarts one that aimed elsewhere.
void SettingsModel::follow(const std::string& path, const Behaviour& behaviour,
                           const tavelabi::TimePoint& now) {
  const std::optional<Resource> stored = host().peek(path);
  if (!stored) return;
  const auto target = stored->values.find("set_value");
  const auto value = stored->values.find("value");
  const auto running = transitions_.find(path);
  if (running != transitions_.end()) {
    if (target != stored->values.end() && !(target->second == running->second.target)) {
      begin(path, target->second, now);
    } else {
      advance(path, behaviour, now);
    }
    return;
  }
  if (target == stored->values.end() || value == stored->values.end() ||
      target->second == value->second) {
    return;
  }
  begin(path, target->second, now);
}

void SettingsModel::begin(const std::string& path, const ResourceValue& target,
                          const tavelabi::TimePoint& now) {
  transitions_[path] = Transition{target, now, 0};
  update(path, with(Resource(), {{"transitioning", true},
                                 {"progress", 0},
                                 {"errorOccurred", false},
                                 {"errorMessage", ""}}));
}

void SettingsModel::advance(const std::string& path, const Behaviour& behaviour,
                            const tavelabi::TimePoint& now) {
  Transition& transition = transitions_.at(path);
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(now - transition.start);
  if (elapsed < behaviour.duration) {
    const int progress = static_cast<int>(elapsed.count() * 100 / behaviour.duration.count());
    if (progress / 10 == transition.progress / 10) return;  // a push every tenth of the way
    transition.progress = progress;
    update(path, with(Resource(), {{"transitioning", true}, {"progress", progress}}));
    return;
  }
  const ResourceValue target = transition.target;
  transitions_.erase(path);
  const auto failure = behaviour.failures.find(path);
  if (failure == behaviour.failures.end()) {
    settle(path, target);
    return;
  }
  // A refused change: the old value stays and the request is withdrawn.
  const std::optional<Resource> stored = host().peek(path);
  if (!stored) return;
  update(path, with(Resource(), {{"set_value", stored->values.at("value")},
                                 {"transitioning", false},
                                 {"progress", 100},
                                 {"errorOccurred", true},
                                 {"errorMessage", failure->second}}));
}

void SettingsModel::settle(const std::string& path, const ResourceValue& target) {
  update(path, with(Resource(), {{"value", target}, {"transitioning", false}, {"progress", 100}}));
}

void SettingsModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
