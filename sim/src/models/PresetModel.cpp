#include "sim/models/PresetModel.h"

#include <json/value.h>

#include <stdexcept>
#include <utility>

#include "sim/SimTavel.h"
#include "sim/models/FixtureValues.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

constexpr const char* kList = "/presets/list";
constexpr const char* kActive = "/presets/active/details";
constexpr const char* kLayout = "/presets/layout";
constexpr const char* kHardwareErrors = "/presets/hardwareErrors";

struct Demo {
  const char* name;
  double frequencyMHz;
  double powerW;
  const char* mode;
  const char* input;
  const char* ps;
  int pty;
};

constexpr Demo kDemos[] = {
    {"Morning FM", 98.5, 5000, "FM", "ANALOG", "KELO AM", 10},
    {"Daytime HD", 98.5, 4500, "FM_PLUS_HD", "DIGITAL_PRIMARY", "KELO HD", 10},
    {"Night low power", 98.5, 1500, "FM", "ANALOG", "KELO NT", 10},
    {"News hour", 98.5, 5000, "FM", "DIGITAL_PRIMARY", "KELONEWS", 1},
    {"Sports live", 98.5, 5000, "FM", "DIGITAL_SECONDARY", "KELO SPT", 4},
    {"Backup analog", 98.5, 3000, "FM", "ANALOG", "KELO BK", 0},
    {"MPX from studio", 98.5, 5000, "FM", "MPX", "KELO MPX", 10},
    {"HD only test", 98.5, 500, "HD", "DIGITAL_PRIMARY", "KELOTEST", 0},
    {"DRM+ trial", 87.6, 1000, "DRM_PLUS", "DIGITAL_PRIMARY", "KELO DRM", 0},
    {"Maintenance", 98.5, 100, "FM", "ANALOG", "KELO MNT", 0},
    {"Emergency", 98.5, 5000, "FM", "AUDIO_PLAYER_TO_AES1", "KELO EMG", 31},
    {"Weekend jazz", 98.5, 4800, "FM_PLUS_HD", "DIGITAL_PRIMARY", "KELOJAZZ", 14},
};

ResourceValue::Map section(
    std::initializer_list<std::pair<const std::string, ResourceValue>> values) {
  return ResourceValue::Map(values);
}

ResourceValue::Map demoSections(const Demo& demo) {
  ResourceValue::Map sections;
  sections["presetName"] = ResourceValue(section({{"value", ResourceValue(demo.name)}}));
  sections["frequency"] = ResourceValue(
      section({{"value", ResourceValue(demo.frequencyMHz)}, {"units", ResourceValue("MHz")}}));
  sections["power"] = ResourceValue(
      section({{"value", ResourceValue(demo.powerW)}, {"units", ResourceValue("W")}}));
  sections["mode"] = ResourceValue(section({{"value", ResourceValue(demo.mode)}}));
  sections["audio"] = ResourceValue(section({{"inputSelect", ResourceValue(demo.input)},
                                             {"monoStereo", ResourceValue("STEREO")},
                                             {"preEmphasis", ResourceValue("SEVENTY_FIVE_US")},
                                             {"deadAirReaction", ResourceValue("NONE")}}));
  sections["rds"] = ResourceValue(section({{"ps", ResourceValue(demo.ps)},
                                           {"pi", ResourceValue("C201")},
                                           {"pty", ResourceValue(demo.pty)},
                                           {"trafficInfo", ResourceValue("TP")},
                                           {"enabled", ResourceValue(true)}}));
  return sections;
}

constexpr const char* kLayoutJson =
    R"({"sections":[{"name":"presetName","label":"Name"},)"
    R"({"name":"frequency","label":"Frequency","units":"MHz"},)"
    R"({"name":"power","label":"Power","units":"W"},{"name":"mode","label":"Mode"},)"
    R"({"name":"audio","label":"Audio"},{"name":"rds","label":"RDS"}]})";

bool has(const Resource& resource, const std::string& key) {
  return resource.values.count(key) != 0;
}

std::set<std::string> textsOf(const Json::Value& list, const std::string& key) {
  if (!list.isArray()) throw std::invalid_argument("presets." + key + ": a list of guids");
  std::set<std::string> texts;
  for (const Json::Value& entry : list) {
    if (!entry.isString()) throw std::invalid_argument("presets." + key + ": a list of guids");
    texts.insert(entry.asString());
  }
  return texts;
}

}  // namespace

std::map<std::string, ResourceValue::Map> PresetModel::demoPresets() {
  std::map<std::string, ResourceValue::Map> presets;
  int guid = 1;
  for (const Demo& demo : kDemos) presets[std::to_string(guid++)] = demoSections(demo);
  return presets;
}

std::vector<Command> PresetModel::commands() {
  return {{"/presets/generateList", bind(&PresetModel::generateList)},
          {"/presets/load", bind(&PresetModel::load)},
          {"/presets/create", bind(&PresetModel::create)},
          {"/presets/update", bind(&PresetModel::updatePreset)},
          {"/presets/delete", bind(&PresetModel::deletePreset)},
          {"/presets/active/change", bind(&PresetModel::activate)}};
}

void PresetModel::applyFixture(const Json::Value& section) {
  FixtureValues::requireObject(section, "presets");
  std::lock_guard lock(mutex_);
  if (section.isMember("pollsToComplete")) {
    pollsToComplete_ = FixtureValues::count(section, "presets", "pollsToComplete");
  }
  if (section.isMember("failAtStart")) {
    failAtStart_ = textsOf(section["failAtStart"], "failAtStart");
  }
  if (section.isMember("failWhilePolling")) {
    failWhilePolling_ = textsOf(section["failWhilePolling"], "failWhilePolling");
  }
}

void PresetModel::seed() {
  {
    std::lock_guard lock(mutex_);
    presets_ = demoPresets();
  }
  host().createIfAbsent(kList, Resource(listValue()));
  Resource active("guid", ResourceValue("1"));
  active.values["value"] = ResourceValue(demoPresets().at("1"));
  host().createIfAbsent(kActive, active);
  host().createIfAbsent(kLayout, Resource(ResourceValue(kLayoutJson)));
  ResourceValue none;
  none.setType(tavelabi::ResourceValueType::LIST_VALUE);
  host().createIfAbsent(kHardwareErrors, Resource(none));
}

ResourceValue PresetModel::listValue() const {
  ResourceValue::List entries;
  for (const auto& [guid, sections] : presets_) {
    entries.push_back(ResourceValue(
        ResourceValue::Map{{"guid", ResourceValue(guid)}, {"value", ResourceValue(sections)}}));
  }
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(entries);
  return list;
}

Resource PresetModel::generateList(ResourceAction& /*action*/) {
  std::lock_guard lock(mutex_);
  return Resource(listValue());
}

Resource PresetModel::load(ResourceAction& action) {
  return step(action, "load", &PresetModel::finishLoad, true);
}
Resource PresetModel::create(ResourceAction& action) {
  return step(action, "create", &PresetModel::finishCreate, true);
}
Resource PresetModel::updatePreset(ResourceAction& action) {
  return step(action, "update", &PresetModel::finishUpdate, true);
}
Resource PresetModel::deletePreset(ResourceAction& action) {
  return step(action, "delete", &PresetModel::finishDelete, true);
}
Resource PresetModel::activate(ResourceAction& action) {
  return step(action, "activate", &PresetModel::finishActivate, true);
}

Resource PresetModel::failure(const std::string& text) {
  Resource answer("errorOccurred", ResourceValue(true));
  answer.values["errorMessage"] = ResourceValue(text);
  return answer;
}

// The first command starts the action; each "checkProgress" counts down, then finishes it.
Resource PresetModel::step(ResourceAction& action, const std::string& kind, Finish finish,
                           bool guidMustExist) {
  const std::string key = action.sessionId + " " + kind;
  Resource answer;
  bool published = false;
  std::string activated;
  std::string hardwareError;
  {
    std::lock_guard lock(mutex_);
    if (!has(action.resource, "checkProgress")) {
      const auto guid = action.resource.values.find("guid");
      if (guid == action.resource.values.end() ||
          guid->second.getType() != tavelabi::ResourceValueType::STRING) {
        return failure("A preset action needs a guid");
      }
      Pending pending{guid->second.getStringValue(), {}, pollsToComplete_};
      if (guidMustExist && presets_.count(pending.guid) == 0) {
        return failure("No preset with guid " + pending.guid);
      }
      if (failAtStart_.count(pending.guid) != 0) {
        return failure("The hardware refused the " + kind + " of preset " + pending.guid);
      }
      const auto sections = action.resource.values.find("value");
      if (sections != action.resource.values.end())
        pending.sections = sections->second.getMapValue();
      pending_[key] = pending;
      return Resource("actionStarted", ResourceValue(true));
    }
    const auto found = pending_.find(key);
    if (found == pending_.end()) return failure("No " + kind + " is under way");
    if (found->second.pollsLeft > 0) {
      --found->second.pollsLeft;
      return Resource("inProgress", ResourceValue(true));
    }
    const Pending pending = found->second;
    pending_.erase(found);
    if (failWhilePolling_.count(pending.guid) != 0) {
      hardwareError = "The hardware did not finish the " + kind + " of preset " + pending.guid;
      answer = failure(hardwareError);
    } else if (presets_.count(pending.guid) == 0) {
      return failure("No preset with guid " + pending.guid);
    } else {
      answer = (this->*finish)(pending);
      published = kind != "load";
      if (kind == "activate") activated = pending.guid;
    }
  }
  // The tree is written outside the lock: its listeners may call back into the host.
  if (!hardwareError.empty()) reportHardwareError(hardwareError);
  if (published) publishList();
  if (!activated.empty()) publishActive(activated);
  return answer;
}

Resource PresetModel::presetAnswer(const std::string& guid) const {
  Resource answer("actionCompleted", ResourceValue(true));
  answer.values["guid"] = ResourceValue(guid);
  answer.values["value"] = ResourceValue(presets_.at(guid));
  return answer;
}

Resource PresetModel::finishLoad(const Pending& pending) { return presetAnswer(pending.guid); }

Resource PresetModel::finishCreate(const Pending& pending) {
  const std::string guid = std::to_string(nextGuid_++);
  ResourceValue::Map copy = presets_.at(pending.guid);
  const std::string name =
      copy.at("presetName").getMapValue().at("value").getStringValue() + " (copy)";
  copy["presetName"] = ResourceValue(ResourceValue::Map{{"value", ResourceValue(name)}});
  presets_[guid] = copy;
  return presetAnswer(guid);
}

Resource PresetModel::finishUpdate(const Pending& pending) {
  for (const auto& [name, values] : pending.sections) presets_[pending.guid][name] = values;
  return presetAnswer(pending.guid);
}

Resource PresetModel::finishDelete(const Pending& pending) {
  presets_.erase(pending.guid);
  return Resource("actionCompleted", ResourceValue(true));
}

Resource PresetModel::finishActivate(const Pending& pending) { return presetAnswer(pending.guid); }

void PresetModel::publishList() {
  Resource list;
  {
    std::lock_guard lock(mutex_);
    list = Resource(listValue());
  }
  ResourceAction action(CCRUD::Update, kList, list, nullptr, "");
  host().processInternalAction(action);
}

// The hardware's errors accumulate in "/presets/hardwareErrors", newest last.
void PresetModel::reportHardwareError(const std::string& text) {
  // Two failures at once must not lose one another's text.
  std::lock_guard lock(errorsMutex_);
  const std::optional<Resource> stored = host().peek(kHardwareErrors);
  ResourceValue::List errors;
  if (stored && stored->values.count("value") != 0)
    errors = stored->values.at("value").getListValue();
  errors.push_back(ResourceValue(text));
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(errors);
  ResourceAction action(CCRUD::Update, kHardwareErrors, Resource(list), nullptr, "");
  host().processInternalAction(action);
}

void PresetModel::publishActive(const std::string& guid) {
  Resource active("guid", ResourceValue(guid));
  {
    std::lock_guard lock(mutex_);
    const auto found = presets_.find(guid);
    if (found == presets_.end()) return;
    active.values["value"] = ResourceValue(found->second);
  }
  ResourceAction action(CCRUD::Update, kActive, active, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
