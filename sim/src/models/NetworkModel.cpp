#include "sim/models/NetworkModel.h"

#include <arpa/inet.h>

#include <stdexcept>
#include <utility>

#include "sim/SimTavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

struct PlatformKey {
  const char* key;
  const char* path;
  enum Kind { Address, Mode, Flag, PlatformOwned } kind;
};

// The command's keys, the resource each fills and what the key takes.
const std::vector<PlatformKey>& platformKeys() {
  static const std::vector<PlatformKey> keys{
      {"dns1", "/network/qCore/dns1", PlatformKey::Address},
      {"dns2", "/network/qCore/dns2", PlatformKey::Address},
      {"dgateway", "/network/qCore/gateway", PlatformKey::Address},
      {"lan1mode", "/network/qCore/lan1/mode", PlatformKey::Mode},
      {"lan1mac", "/network/qCore/lan1/mac", PlatformKey::PlatformOwned},
      {"lan1ip", "/network/qCore/lan1/ip", PlatformKey::Address},
      {"lan1netmask", "/network/qCore/lan1/netmask", PlatformKey::Address},
      {"lan1up", "/network/qCore/lan1/up", PlatformKey::Flag},
      {"lan1connected", "/network/qCore/lan1/connected", PlatformKey::PlatformOwned},
      {"lan2mode", "/network/qCore/lan2/mode", PlatformKey::Mode},
      {"lan2mac", "/network/qCore/lan2/mac", PlatformKey::PlatformOwned},
      {"lan2ip", "/network/qCore/lan2/ip", PlatformKey::Address},
      {"lan2netmask", "/network/qCore/lan2/netmask", PlatformKey::Address},
      {"lan2up", "/network/qCore/lan2/up", PlatformKey::Flag},
      {"lan2connected", "/network/qCore/lan2/connected", PlatformKey::PlatformOwned}};
  return keys;
}

const std::vector<std::pair<const char*, bool>>& controllerWritable() {
  static const std::vector<std::pair<const char*, bool>> paths{
      {"/network/ipAddress", false}, {"/network/subnetMask", false},
      {"/network/gateway", false},   {"/network/dns1", false},
      {"/network/dns2", false},      {"/network/dhcpEnabled", true}};
  return paths;
}

Resource followed(const ResourceValue& value) {
  Resource resource(value);
  resource.values["set_value"] = value;
  return resource;
}

}  // namespace

bool NetworkModel::isAddress(const std::string& text) {
  in_addr address{};
  return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

std::vector<Command> NetworkModel::commands() {
  return {{"/qCore/getip", bind(&NetworkModel::getPlatform)},
          {"/qCore/setip", bind(&NetworkModel::setPlatform)}};
}

void NetworkModel::seed() {
  host().createIfAbsent("/network/ipAddress", followed(ResourceValue("192.168.1.20")));
  host().createIfAbsent("/network/dns1", followed(ResourceValue("192.168.1.1")));
  host().createIfAbsent("/network/dns2", followed(ResourceValue("9.9.9.9")));
  host().createIfAbsent("/network/subnetMask", followed(ResourceValue("255.255.255.0")));
  host().createIfAbsent("/network/dhcpEnabled", followed(ResourceValue(false)));
  host().createIfAbsent("/network/macAddr", Resource(ResourceValue("00:1a:2b:3c:4d:5e")));
  host().createIfAbsent("/network/gateway", followed(ResourceValue("192.168.1.1")));
  host().createIfAbsent("/network/runningStatus", Resource(ResourceValue("running")));
  {
    std::lock_guard lock(mutex_);
    platform_ = {{"dns1", ResourceValue("10.0.0.1")},
                 {"dns2", ResourceValue("9.9.9.9")},
                 {"dgateway", ResourceValue("10.0.0.1")},
                 {"lan1mode", ResourceValue("static")},
                 {"lan1mac", ResourceValue("00:1a:2b:3c:4d:60")},
                 {"lan1ip", ResourceValue("10.0.0.20")},
                 {"lan1netmask", ResourceValue("255.255.255.0")},
                 {"lan1up", ResourceValue(true)},
                 {"lan1connected", ResourceValue(true)},
                 {"lan2mode", ResourceValue("dhcp")},
                 {"lan2mac", ResourceValue("00:1a:2b:3c:4d:61")},
                 {"lan2ip", ResourceValue("0.0.0.0")},
                 {"lan2netmask", ResourceValue("0.0.0.0")},
                 {"lan2up", ResourceValue(false)},
                 {"lan2connected", ResourceValue(false)}};
  }
  // Until the first "/qCore/getip" the resources show what the platform said at start.
  for (const PlatformKey& key : platformKeys()) {
    std::lock_guard lock(mutex_);
    host().createIfAbsent(key.path, Resource(platform_.at(key.key)));
  }
}

void NetworkModel::tick(const tavelabi::TimePoint& /*now*/) {
  for (const auto& [path, isFlag] : controllerWritable()) follow(path, isFlag);
}

// A written value of the right form is taken; any other is withdrawn.
void NetworkModel::follow(const std::string& path, bool isFlag) {
  const std::optional<Resource> stored = host().peek(path);
  if (!stored) return;
  const auto target = stored->values.find("set_value");
  const auto value = stored->values.find("value");
  if (target == stored->values.end() || value == stored->values.end() ||
      target->second == value->second) {
    return;
  }
  const bool fits = isFlag ? target->second.getType() == ResourceValueType::BOOL
                           : target->second.getType() == ResourceValueType::STRING &&
                                 isAddress(target->second.getStringValue());
  if (fits) {
    update(path, Resource(target->second));
  } else {
    update(path, Resource("set_value", value->second));
  }
}

Resource NetworkModel::getPlatform(ResourceAction& /*action*/) {
  std::map<std::string, ResourceValue> state;
  {
    std::lock_guard lock(mutex_);
    state = platform_;
  }
  for (const PlatformKey& key : platformKeys()) update(key.path, Resource(state.at(key.key)));
  return Resource();
}

Resource NetworkModel::setPlatform(ResourceAction& action) {
  std::map<std::string, ResourceValue> changes;
  for (const PlatformKey& key : platformKeys()) {
    const ResourceValue& value = action.resource.values.at(key.key);
    switch (key.kind) {
      case PlatformKey::Address:
        if (value.getType() != ResourceValueType::STRING || !isAddress(value.getStringValue())) {
          throw std::invalid_argument(std::string(key.key) + ": not an IPv4 address");
        }
        changes[key.key] = value;
        break;
      case PlatformKey::Mode:
        if (value.getType() != ResourceValueType::STRING ||
            (value.getStringValue() != "static" && value.getStringValue() != "dhcp")) {
          throw std::invalid_argument(std::string(key.key) + ": \"static\" or \"dhcp\"");
        }
        changes[key.key] = value;
        break;
      case PlatformKey::Flag:
        changes[key.key] = ResourceValue(value.getBoolValue());
        break;
      case PlatformKey::PlatformOwned:
        break;  // sent back by the plug-in, but only the platform knows them
    }
  }
  std::lock_guard lock(mutex_);
  for (auto& [key, value] : changes) platform_[key] = std::move(value);
  return Resource();
}

void NetworkModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
