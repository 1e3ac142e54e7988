#include "sim/models/RemoteIoModel.h"

#include <json/value.h>

#include <cctype>
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

namespace {

constexpr const char* kPrefix = "/remoteio/";
constexpr const char* kInputList = "/remoteio/inputs/list";
constexpr const char* kOutputList = "/remoteio/outputs/list";
constexpr const char* kAnalogList = "/remoteio/analogs/list";
constexpr const char* kAnalogPrefix = "/remoteio/analog/";
constexpr const char* kControlList = "/remoteio/siteControl/list";
constexpr const char* kControlPrefix = "/remoteio/siteControl/";

ResourceValue listOf(const ResourceValue::List& entries) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(entries);
  return list;
}

ResourceValue intsOf(const std::vector<int>& numbers) {
  ResourceValue::List entries;
  for (int number : numbers) entries.emplace_back(number);
  return listOf(entries);
}

Resource rule(const std::string& guid, const std::string& action, int channel,
              const std::string& label, int mask, bool level) {
  Resource resource;
  resource.values["guid"] = ResourceValue(guid);
  resource.values["value"] = ResourceValue(action);
  resource.values["set_value"] = ResourceValue(channel);
  resource.values["label"] = ResourceValue(label);
  resource.values["polarityMask"] = ResourceValue(mask);
  resource.values["level"] = ResourceValue(level);
  resource.values["transitioning"] = ResourceValue(false);
  return resource;
}

Resource analog(const std::string& guid, const std::string& label, int value) {
  Resource resource;
  resource.values["guid"] = ResourceValue(guid);
  resource.values["label"] = ResourceValue(label);
  resource.values["maxValue"] = ResourceValue(1000);
  resource.values["value"] = ResourceValue(value);
  resource.values["set_value"] = ResourceValue(value);
  resource.values["transitioning"] = ResourceValue(false);
  return resource;
}

Resource siteControl(const std::string& guid, const std::string& name, bool latch,
                     bool canBeDeleted) {
  Resource resource;
  resource.values["guid"] = ResourceValue(guid);
  resource.values["name"] = ResourceValue(name);
  resource.values["severity"] = ResourceValue(2);
  resource.values["delay"] = ResourceValue(5);
  resource.values["latch"] = ResourceValue(latch);
  resource.values["log"] = ResourceValue(true);
  resource.values["input1"] = ResourceValue("1");
  resource.values["input2"] = ResourceValue("2");
  resource.values["logicalOperator"] = ResourceValue(0);
  resource.values["logic1"] = ResourceValue(true);
  resource.values["logic2"] = ResourceValue(false);
  resource.values["state"] = ResourceValue(latch);
  resource.values["canBeDeleted"] = ResourceValue(canBeDeleted);
  resource.values["transitioning"] = ResourceValue(false);
  return resource;
}

// A number that the plug-in sends as decimal text.
int wholeNumber(const Resource& values, const std::string& key) {
  const std::string& text = values.values.at(key).getStringValue();
  std::size_t used = 0;
  int number = 0;
  try {
    number = std::stoi(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (text.empty() || used != text.size()) {
    throw std::invalid_argument("\"" + key + "\" must be a whole number, not \"" + text + "\"");
  }
  return number;
}

const std::string& guidOf(const ResourceAction& action) {
  return action.resource.values.at("guid").getStringValue();
}

}  // namespace

std::optional<std::string> RemoteIoModel::rulePathOf(const std::string& guid) {
  for (const char* word : {"input", "output"}) {
    const std::string prefix(word);
    if (guid.size() <= prefix.size() || guid.compare(0, prefix.size(), prefix) != 0) continue;
    const std::string number = guid.substr(prefix.size());
    for (char c : number) {
      if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
    }
    return prefix + "/" + number;
  }
  return std::nullopt;
}

std::vector<Command> RemoteIoModel::commands() {
  return {{"/remoteio/update", bind(&RemoteIoModel::updateRule)},
          {"/remoteio/analog/update", bind(&RemoteIoModel::updateAnalog)},
          {"/remoteio/siteControl/create", bind(&RemoteIoModel::createSiteControl)},
          {"/remoteio/siteControl/update", bind(&RemoteIoModel::updateSiteControl)},
          {"/remoteio/siteControl/delete", bind(&RemoteIoModel::deleteSiteControl)},
          {"/remoteio/siteControl/resetLatched", bind(&RemoteIoModel::resetLatched)}};
}

void RemoteIoModel::applyFixture(const Json::Value& section) {
  FixtureValues::requireObject(section, "remoteio");
  if (section.isMember("settleDelayMs")) {
    const std::chrono::milliseconds delay =
        FixtureValues::delay(section, "remoteio", "settleDelayMs");
    std::lock_guard lock(mutex_);
    delay_ = delay;
  }
}

void RemoteIoModel::seed() {
  std::vector<std::string> inputs;
  const char* actionNames[] = {"Unused", "RF on", "RF off", "Preset select"};
  for (int channel = 1; channel <= 4; ++channel) {
    const std::string path = std::string(kPrefix) + "input/" + std::to_string(channel);
    Resource resource =
        rule("input" + std::to_string(channel), actionNames[channel - 1], channel,
             channel % 2 == 0 ? "Active high" : "Active low", channel % 2 + 1, channel % 2 == 0);
    if (channel == 4) {
      resource.values["name"] = ResourceValue("Door open");
      resource.values["severity"] = ResourceValue(2);
      resource.values["log"] = ResourceValue(true);
      resource.values["canBeDeleted"] = ResourceValue(true);
    }
    host().createIfAbsent(path, resource);
    inputs.push_back(path);
  }
  host().createIfAbsent(kInputList, Resource(ResourceValue(inputs)));
  std::vector<std::string> outputs;
  for (int channel = 1; channel <= 2; ++channel) {
    const std::string path = std::string(kPrefix) + "output/" + std::to_string(channel);
    host().createIfAbsent(
        path, rule("output" + std::to_string(channel), channel == 1 ? "RF on" : "Summary alarm",
                   channel, "Closed", 1, true));
    outputs.push_back(path);
  }
  host().createIfAbsent(kOutputList, Resource(ResourceValue(outputs)));

  // Each input action offers eight levels; a blank name is a level it does not offer.
  Resource inputActions;
  inputActions.values["channelId"] = intsOf({0, 1, 2, 3});
  inputActions.values["label"] =
      ResourceValue(std::vector<std::string>{"Unused", "RF on", "RF off", "Preset select"});
  inputActions.values["polarityMask"] = intsOf({0, 3, 3, 255});
  std::vector<std::string> levels;
  for (int action = 0; action < 4; ++action) {
    const std::vector<std::string> names =
        action == 3
            ? std::vector<std::string>{"Preset 1", "Preset 2", "Preset 3", "Preset 4",
                                       "Preset 5", "Preset 6", "Preset 7", "Preset 8"}
            : std::vector<std::string>{"Active low", "Active high", " ", " ", " ", " ", " ", " "};
    levels.insert(levels.end(), names.begin(), names.end());
  }
  inputActions.values["value"] = ResourceValue(levels);
  host().createIfAbsent("/remoteio/inputs/actions", inputActions);
  Resource outputActions;
  outputActions.values["channelId"] = intsOf({0, 1, 2});
  outputActions.values["label"] =
      ResourceValue(std::vector<std::string>{"Unused", "RF on", "Summary alarm"});
  outputActions.values["values"] = ResourceValue(std::vector<std::string>{"Open", "Closed"});
  host().createIfAbsent("/remoteio/outputs/actions", outputActions);

  host().createIfAbsent(std::string(kAnalogPrefix) + "ao1", analog("ao1", "Forward power", 750));
  host().createIfAbsent(std::string(kAnalogPrefix) + "ao2", analog("ao2", "Reflected power", 20));
  host().createIfAbsent(
      kAnalogList, Resource(ResourceValue(std::vector<std::string>{
                       std::string(kAnalogPrefix) + "ao1", std::string(kAnalogPrefix) + "ao2"})));
  host().createIfAbsent(std::string(kControlPrefix) + "sc1",
                        siteControl("sc1", "Cooling fault", true, false));
  host().createIfAbsent(std::string(kControlPrefix) + "sc2",
                        siteControl("sc2", "Generator running", false, true));
  host().createIfAbsent(
      kControlList,
      Resource(ResourceValue(std::vector<std::string>{std::string(kControlPrefix) + "sc1",
                                                      std::string(kControlPrefix) + "sc2"})));
}

void RemoteIoModel::tick(const tavelabi::TimePoint& now) {
  std::map<std::string, std::optional<Resource>> due;
  {
    std::lock_guard lock(mutex_);
    for (auto entry = pending_.begin(); entry != pending_.end();) {
      Pending& pending = entry->second;
      if (!pending.since) pending.since = now;
      if (now - *pending.since < delay_) {
        ++entry;
        continue;
      }
      due.emplace(entry->first, std::move(pending.values));
      entry = pending_.erase(entry);
    }
  }
  // Host calls outside the lock: a command may be waiting for it with the host's own lock held.
  for (const auto& [path, values] : due) settle(path, values);
}

Resource RemoteIoModel::updateRule(ResourceAction& action) {
  const std::string& guid = guidOf(action);
  const std::optional<std::string> below = rulePathOf(guid);
  if (!below) throw tavelabi::NonExistentResourcePathException("Unknown remote I/O rule " + guid);
  const std::string path = kPrefix + *below;
  (void)existing(path);
  // The plug-in writes the channel and the mask as text; the rule keeps them as numbers.
  Resource values;
  for (const char* key : {"value", "label", "level"}) {
    values.values[key] = action.resource.values.at(key);
  }
  values.values["set_value"] = ResourceValue(wholeNumber(action.resource, "set_value"));
  values.values["polarityMask"] = ResourceValue(wholeNumber(action.resource, "polarityMask"));
  for (const char* key : {"name", "severity", "log"}) {
    const auto found = action.resource.values.find(key);
    if (found != action.resource.values.end()) values.values[key] = found->second;
  }
  begin(path, values);
  return Resource("guid", ResourceValue(*below));
}

Resource RemoteIoModel::updateAnalog(ResourceAction& action) {
  const std::string& guid = guidOf(action);
  const std::string path = kAnalogPrefix + guid;
  const Resource stored = existing(path);
  const int wanted = action.resource.values.at("set_value").getIntValue();
  const int maxValue = stored.values.at("maxValue").getIntValue();
  if (wanted < 0 || wanted > maxValue) {
    throw std::out_of_range("Analog output " + guid + " takes 0 to " + std::to_string(maxValue) +
                            ", not " + std::to_string(wanted));
  }
  Resource values;
  values.values["label"] = action.resource.values.at("label");
  values.values["set_value"] = ResourceValue(wanted);
  values.values["value"] = ResourceValue(wanted);
  begin(path, values);
  return Resource("guid", ResourceValue(guid));
}

Resource RemoteIoModel::createSiteControl(ResourceAction& action) {
  std::string guid;
  {
    std::lock_guard lock(mutex_);
    guid = "sc" + std::to_string(nextGuid_++);
  }
  Resource created = action.resource;
  created.values["guid"] = ResourceValue(guid);
  created.values["canBeDeleted"] = ResourceValue(true);
  created.values["transitioning"] = ResourceValue(true);
  const std::string path = kControlPrefix + guid;
  ResourceAction create(CCRUD::Create, path, created, nullptr, "");
  host().processInternalAction(create);
  setListed(kControlList, path, true);
  begin(path, Resource());
  return Resource("guid", ResourceValue(guid));
}

Resource RemoteIoModel::updateSiteControl(ResourceAction& action) {
  const std::string& guid = guidOf(action);
  const std::string path = kControlPrefix + guid;
  const Resource stored = existing(path);
  Resource values = action.resource;
  values.values["guid"] = ResourceValue(guid);
  values.values["canBeDeleted"] = stored.values.at("canBeDeleted");  // not the client's to change
  begin(path, values);
  return Resource("guid", ResourceValue(guid));
}

Resource RemoteIoModel::deleteSiteControl(ResourceAction& action) {
  const std::string& guid = guidOf(action);
  const std::string path = kControlPrefix + guid;
  const Resource stored = existing(path);
  if (!stored.values.at("canBeDeleted").getBoolValue()) {
    throw std::invalid_argument("Site control " + guid + " cannot be deleted");
  }
  begin(path, std::nullopt);
  return Resource();
}

Resource RemoteIoModel::resetLatched(ResourceAction& /*action*/) {
  const std::optional<Resource> list = host().peek(kControlList);
  if (!list) return Resource();
  for (const ResourceValue& entry : list->values.at("value").getListValue()) {
    const std::optional<Resource> control = host().peek(entry.getStringValue());
    if (control && control->values.at("latch").getBoolValue()) {
      update(entry.getStringValue(), Resource("state", ResourceValue(false)));
    }
  }
  return Resource();
}

void RemoteIoModel::begin(const std::string& path, std::optional<Resource> values) {
  update(path, Resource("transitioning", ResourceValue(true)));
  std::lock_guard lock(mutex_);
  pending_[path] = Pending{std::move(values), std::nullopt};
}

void RemoteIoModel::settle(const std::string& path, const std::optional<Resource>& values) {
  if (!values) {
    ResourceAction remove(CCRUD::Delete, path, nullptr, "");
    host().processInternalAction(remove);
    setListed(kControlList, path, false);
    return;
  }
  Resource settled = *values;
  settled.values["transitioning"] = ResourceValue(false);
  update(path, settled);
}

Resource RemoteIoModel::existing(const std::string& path) const {
  const std::optional<Resource> stored = host().peek(path);
  if (!stored) throw tavelabi::NonExistentResourcePathException("No such object: " + path);
  return *stored;
}

void RemoteIoModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

void RemoteIoModel::setListed(const std::string& listPath, const std::string& entry, bool listed) {
  const std::optional<Resource> list = host().peek(listPath);
  ResourceValue::List entries;
  if (list) {
    for (const ResourceValue& value : list->values.at("value").getListValue()) {
      if (value.getStringValue() != entry) entries.push_back(value);
    }
  }
  if (listed) entries.emplace_back(entry);
  update(listPath, Resource(listOf(entries)));
}

}  // namespace halvor::sim
