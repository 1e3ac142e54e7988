#include "sim/models/AlarmModel.h"

#include <algorithm>
#include <stdexcept>

#include "sim/RandomText.h"
#include "sim/SimTavel.h"
#include "sim/models/DeviceModel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

// Of each device name, this id's alarms marked so are active when the model starts.
constexpr const char* kActiveAtStartId = "2";

std::vector<std::string> textsOf(const Json::Value& list, const char* key) {
  if (!list.isArray()) {
    throw std::invalid_argument(std::string("alarms fixture: \"") + key +
                                "\" must be a list of paths");
  }
  std::vector<std::string> texts;
  for (const Json::Value& element : list) {
    if (!element.isString()) {
      throw std::invalid_argument(std::string("alarms fixture: \"") + key +
                                  "\" must be a list of paths");
    }
    texts.push_back(element.asString());
  }
  return texts;
}

std::vector<std::string> textsOf(const Resource& resource) {
  std::vector<std::string> texts;
  const auto value = resource.values.find("value");
  if (value == resource.values.end() || value->second.getType() != ResourceValueType::LIST_VALUE) {
    return texts;
  }
  for (const ResourceValue& element : value->second.getListValue()) {
    if (element.getType() == ResourceValueType::STRING) texts.push_back(element.getStringValue());
  }
  return texts;
}

// The device name of "/alarms/<name>/...": its second segment.
std::string deviceNameOf(const std::string& path) {
  const std::string prefix = "/alarms/";
  const std::size_t end = path.find('/', prefix.size());
  if (path.rfind(prefix, 0) != 0 || end == std::string::npos || end == prefix.size()) {
    throw std::invalid_argument("alarms fixture: \"vanished\" path " + path +
                                " is not of the form /alarms/<name>/...");
  }
  return path.substr(prefix.size(), end - prefix.size());
}

bool contains(const std::vector<std::string>& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

}  // namespace

const std::vector<AlarmModel::Definition>& AlarmModel::definitions() {
  static const std::vector<Definition> kDefinitions{
      {"exciter", "pllUnlocked", "PLL unlocked", "The synthesizer has lost its lock", "CRITICAL",
       false},
      {"exciter", "inputLost", "Input signal lost", "No programme signal at the selected input",
       "REDUCED_POWER", false},
      {"amplifier", "overTemperature", "Over temperature", "Heat sink above its temperature limit",
       "REDUCED_POWER", true},
      {"amplifier", "highReflectedPower", "High reflected power", "Reflected power above its limit",
       "CRITICAL", false},
      {"powersupply", "mainsFailure", "Mains failure", "Mains input out of range", "CRITICAL",
       false},
      {"powersupply", "outputVoltageHigh", "Output voltage high",
       "Output voltage above its nominal range", "MAINTENANCE", false},
      {"fan", "stalled", "Fan stalled", "The fan does not turn", "MAINTENANCE", true},
      {"fan", "lowSpeed", "Low speed", "The fan turns below its nominal speed",
       "UNSPECIFIED_ALARM_SEVERITY", false},
  };
  return kDefinitions;
}

std::string AlarmModel::listPath(const std::string& deviceName) {
  return "/alarms/" + deviceName + "/list";
}

std::string AlarmModel::alarmPath(const std::string& deviceName, const std::string& deviceId,
                                  const std::string& key) {
  return "/alarms/" + deviceName + "/" + deviceId + "/" + key;
}

std::vector<std::string> AlarmModel::alarmPaths() {
  std::vector<std::string> paths;
  for (const DemoDevice& device : DeviceModel::devices()) {
    for (const std::string& id : device.ids) {
      for (const Definition& definition : definitions()) {
        if (device.name == definition.deviceName) {
          paths.push_back(alarmPath(device.name, id, definition.key));
        }
      }
    }
  }
  return paths;
}

const std::vector<std::string>& AlarmModel::movingAlarms() {
  static const std::vector<std::string> kMoving{
      "/alarms/fan/3/lowSpeed",
      "/alarms/exciter/1/inputLost",
      "/alarms/powersupply/2/outputVoltageHigh",
      "/alarms/amplifier/4/highReflectedPower",
  };
  return kMoving;
}

// ---- settings -----------------------------------------------------------------------------------

void AlarmModel::applyFixture(const Json::Value& section) {
  if (!section.isObject()) throw std::invalid_argument("alarms fixture: must be an object");
  for (const std::string& key : section.getMemberNames()) {
    if (key == "active") {
      active_ = textsOf(section[key], "active");
    } else if (key == "vanished") {
      for (const std::string& path : textsOf(section[key], "vanished")) {
        deviceNameOf(path);  // refused here, before anything changes
        vanished_.push_back(path);
      }
    } else if (key == "moving") {
      if (!section[key].isBool())
        throw std::invalid_argument("alarms fixture: \"moving\" is true or false");
      moving_ = section[key].asBool();
    } else if (key == "periodSeconds") {
      if (!section[key].isInt() || section[key].asInt() <= 0) {
        throw std::invalid_argument("alarms fixture: \"periodSeconds\" is a positive whole number");
      }
      period_ = std::chrono::seconds(section[key].asInt());
    } else {
      throw std::invalid_argument("alarms fixture: unknown key \"" + key + "\"");
    }
  }
  // A section applied after seeding acts on the tree at once; before, seeding applies it.
  if (seeded_) applySettings();
}

void AlarmModel::applySettings() {
  if (active_) setActiveList(*active_);
  for (const std::string& path : vanished_) makeVanish(path);
}

void AlarmModel::setActiveList(const std::vector<std::string>& paths) {
  write(kActivePath, Resource(ResourceValue(paths)));
  for (const std::string& path : alarmPaths()) {
    if (host().peek(path)) write(path, Resource("value", ResourceValue(contains(paths, path))));
  }
}

void AlarmModel::makeVanish(const std::string& path) {
  const std::string list = listPath(deviceNameOf(path));
  std::vector<std::string> listed;
  if (std::optional<Resource> stored = host().peek(list)) listed = textsOf(*stored);
  if (!contains(listed, path)) {
    listed.push_back(path);
    write(list, Resource(ResourceValue(listed)));
  }
  if (host().peek(path)) {
    ResourceAction remove(CCRUD::Delete, path, nullptr, "");
    host().processInternalAction(remove);
  }
}

// ---- seeding ------------------------------------------------------------------------------------

void AlarmModel::seed() {
  seedAlarms(RandomText::isoTimeNow());
  seeded_ = true;
  applySettings();
}

void AlarmModel::seedAlarms(const std::string& time) {
  std::vector<std::string> activeAtStart;
  for (const DemoDevice& device : DeviceModel::devices()) {
    std::vector<std::string> listed;
    for (const std::string& id : device.ids) {
      for (const Definition& definition : definitions()) {
        if (device.name != definition.deviceName) continue;
        const std::string path = alarmPath(device.name, id, definition.key);
        const bool active = definition.activeAtStart && id == kActiveAtStartId;
        Resource alarm;
        alarm.values["label"] = ResourceValue(definition.label);
        alarm.values["path"] = ResourceValue(path);
        alarm.values["description"] = ResourceValue(definition.description);
        alarm.values["value"] = ResourceValue(active);
        alarm.values["deviceName"] = ResourceValue(device.name);
        alarm.values["deviceId"] = ResourceValue(id);
        alarm.values["severity"] = ResourceValue(definition.severity);
        alarm.values["time"] = ResourceValue(time);
        host().createIfAbsent(path, alarm);
        listed.push_back(path);
        if (active) activeAtStart.push_back(path);
      }
    }
    host().createIfAbsent(listPath(device.name), Resource(ResourceValue(listed)));
  }
  host().createIfAbsent(kActivePath, Resource(ResourceValue(activeAtStart)));
}

// ---- moving -------------------------------------------------------------------------------------

void AlarmModel::tick(const tavelabi::TimePoint& now) {
  if (!moving_) return;
  if (!started_) {
    started_ = true;
    lastChange_ = now;
    return;
  }
  if (now - lastChange_ < period_) return;
  lastChange_ = now;
  // The next alarm that is still there takes its turn; one whose resource was removed is
  // passed over.
  const std::vector<std::string>& moving = movingAlarms();
  for (std::size_t tried = 0; tried < moving.size(); ++tried) {
    const std::string& path = moving[nextTurn_];
    nextTurn_ = (nextTurn_ + 1) % moving.size();
    if (toggle(path)) return;
  }
}

// The alarm's "value" turned over and its time set, then the active list made to agree; false
// when the alarm has no boolean "value" to turn.
bool AlarmModel::toggle(const std::string& path) {
  const std::optional<Resource> stored = host().peek(path);
  if (!stored) return false;
  const auto value = stored->values.find("value");
  if (value == stored->values.end() || value->second.getType() != ResourceValueType::BOOL) {
    return false;
  }
  const bool active = !value->second.getBoolValue();
  Resource change("value", ResourceValue(active));
  change.values["time"] = ResourceValue(RandomText::isoTimeNow());
  write(path, change);
  updateActiveList(path, active);
  return true;
}

void AlarmModel::updateActiveList(const std::string& path, bool active) {
  std::vector<std::string> listed = storedActiveList();
  listed.erase(std::remove(listed.begin(), listed.end(), path), listed.end());
  if (active) listed.push_back(path);
  write(kActivePath, Resource(ResourceValue(listed)));
}

std::vector<std::string> AlarmModel::storedActiveList() const {
  const std::optional<Resource> stored = host().peek(kActivePath);
  return stored ? textsOf(*stored) : std::vector<std::string>{};
}

// An Update, or a Create when nothing is stored at the path (a client deleted it).
void AlarmModel::write(const std::string& path, const Resource& resource) {
  if (host().createIfAbsent(path, resource)) return;
  ResourceAction update(CCRUD::Update, path, resource, nullptr, "");
  host().processInternalAction(update);
}

}  // namespace halvor::sim
