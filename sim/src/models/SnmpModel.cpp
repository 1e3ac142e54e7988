#include "sim/models/SnmpModel.h"

#include <json/value.h>

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

constexpr const char* kTrapList = "/snmp/trapSettings/list";
constexpr const char* kTrapPrefix = "/snmp/trapSettings/";

Resource followed(const ResourceValue& value) {
  Resource resource(value);
  resource.values["set_value"] = value;
  return resource;
}

Resource receiver(const std::string& guid, const std::string& address) {
  Resource resource;
  resource.values["guid"] = ResourceValue(guid);
  resource.values["trapReceiver"] = ResourceValue(address);
  resource.values["trapReceiverPort"] = ResourceValue(162);
  resource.values["trapCommunityString"] = ResourceValue("public");
  resource.values["trapType"] = ResourceValue("TRAP_V2C");
  resource.values["repeat"] = ResourceValue(3);
  resource.values["timeout"] = ResourceValue(5);
  return resource;
}

ResourceValue::List withGuid(ResourceValue::List guids, const std::string& guid, bool add) {
  ResourceValue::List result;
  for (const ResourceValue& entry : guids) {
    if (entry.getStringValue() != guid) result.push_back(entry);
  }
  if (add) result.push_back(ResourceValue(guid));
  return result;
}

ResourceValue listOf(ResourceValue::List entries) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(entries);
  return list;
}

}  // namespace

const std::vector<std::string>& SnmpModel::followedPaths() {
  static const std::vector<std::string> paths{"/snmp/agentPort", "/snmp/readCommunity",
                                              "/snmp/writeCommunity", "/snmp/trapsEnabled",
                                              "/snmp/trapSettings"};
  return paths;
}

std::vector<Command> SnmpModel::commands() {
  return {{"/snmp/command/newTrapSetting", bind(&SnmpModel::newTrapSetting)},
          {"/snmp/command/deleteTrapSetting", bind(&SnmpModel::deleteTrapSetting)}};
}

void SnmpModel::applyFixture(const Json::Value& section) {
  FixtureValues::requireObject(section, "snmp");
  std::lock_guard lock(mutex_);
  if (section.isMember("applyDelayMs")) {
    behaviour_.delay = FixtureValues::delay(section, "snmp", "applyDelayMs");
  }
  if (section.isMember("applying")) {
    behaviour_.applying = FixtureValues::flag(section, "snmp", "applying");
  }
}

void SnmpModel::seed() {
  Resource port = followed(ResourceValue(161));
  port.values["minValue"] = ResourceValue(1);
  port.values["maxValue"] = ResourceValue(65535);
  host().createIfAbsent("/snmp/agentPort", port);
  host().createIfAbsent("/snmp/readCommunity",
                        followed(ResourceValue(std::vector<std::string>{"public"})));
  host().createIfAbsent("/snmp/writeCommunity",
                        followed(ResourceValue(std::vector<std::string>{"private"})));
  host().createIfAbsent("/snmp/trapsEnabled", followed(ResourceValue(true)));
  host().createIfAbsent("/snmp/trapSettings",
                        followed(ResourceValue(std::vector<std::string>{"trap-1"})));
  host().createIfAbsent("/snmp/trapSettings/validations",
                        Resource("trapReceiverPort", ResourceValue(ResourceValue::Map{
                                                         {"minValue", 1}, {"maxValue", 65535}})));
  host().createIfAbsent(kTrapList, Resource(ResourceValue(std::vector<std::string>{"trap-1"})));
  host().createIfAbsent(std::string(kTrapPrefix) + "trap-1", receiver("trap-1", "192.168.1.50"));
}

void SnmpModel::tick(const tavelabi::TimePoint& now) {
  Behaviour behaviour;
  {
    std::lock_guard lock(mutex_);
    behaviour = behaviour_;
  }
  if (!behaviour.applying) return;
  for (const std::string& path : followedPaths()) follow(path, behaviour, now);
}

// A "set_value" other than "value" is applied once it has stood for the delay.
void SnmpModel::follow(const std::string& path, const Behaviour& behaviour,
                       const tavelabi::TimePoint& now) {
  const std::optional<Resource> stored = host().peek(path);
  if (!stored) return;
  const auto target = stored->values.find("set_value");
  const auto value = stored->values.find("value");
  if (target == stored->values.end() ||
      (value != stored->values.end() && value->second == target->second)) {
    pending_.erase(path);
    return;
  }
  auto waiting = pending_.find(path);
  if (waiting == pending_.end() || !(waiting->second.first == target->second)) {
    pending_[path] = {target->second, now};
    return;
  }
  if (now - waiting->second.second < behaviour.delay) return;
  pending_.erase(waiting);
  update(path, Resource(target->second));
}

Resource SnmpModel::newTrapSetting(ResourceAction& action) {
  std::string guid;
  {
    std::lock_guard lock(mutex_);
    guid = "trap-" + std::to_string(nextGuid_++);
  }
  Resource created = action.resource;
  created.values["guid"] = ResourceValue(guid);
  ResourceAction create(CCRUD::Create, kTrapPrefix + guid, created, nullptr, "");
  host().processInternalAction(create);
  const std::optional<Resource> list = host().peek(kTrapList);
  ResourceValue::List guids =
      list ? list->values.at("value").getListValue() : ResourceValue::List{};
  Resource listed(listOf(withGuid(guids, guid, true)));
  listed.values["previouslyAdded"] = ResourceValue(guid);
  update(kTrapList, listed);
  return Resource("guid", guid);
}

Resource SnmpModel::deleteTrapSetting(ResourceAction& action) {
  const std::string guid = action.resource.values.at("guid").getStringValue();
  ResourceAction remove(CCRUD::Delete, kTrapPrefix + guid, nullptr, "");
  host().processInternalAction(remove);
  const std::optional<Resource> list = host().peek(kTrapList);
  if (list)
    update(kTrapList,
           Resource(listOf(withGuid(list->values.at("value").getListValue(), guid, false))));
  return Resource();
}

void SnmpModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
