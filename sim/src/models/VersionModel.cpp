#include "sim/models/VersionModel.h"

#include <json/value.h>

#include <stdexcept>
#include <thread>

#include "sim/SimTavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

Resource refused(const std::string& text) { return Resource("errorMessage", ResourceValue(text)); }

std::string stateOf(const Resource& service) {
  return service.values.at("serviceState").getStringValue();
}

// The next state of a moving service, nullopt for one at rest.
std::optional<std::string> nextState(const std::string& state) {
  if (state == "ENABLING") return "ENABLED";
  if (state == "DISABLING") return "DISABLED";
  return std::nullopt;
}

std::chrono::milliseconds delayOf(const Json::Value& section, const char* key,
                                  std::chrono::milliseconds otherwise) {
  if (!section.isMember(key)) return otherwise;
  const Json::Value& delay = section[key];
  if (!delay.isInt() || delay.asInt() < 0) {
    throw std::invalid_argument(std::string("versions.") + key + ": a whole number, 0 or more");
  }
  return std::chrono::milliseconds(delay.asInt());
}

}  // namespace

std::vector<Command> VersionModel::commands() {
  return {{"/lodestar/service/update", bind(&VersionModel::updateService)},
          {"/command/qcore/controlSkyRunRemoteSupport", bind(&VersionModel::controlSupport)},
          {"/command/qcore/readSkyRunRemoteSupport", bind(&VersionModel::readSupport)}};
}

void VersionModel::applyFixture(const Json::Value& section) {
  if (!section.isObject()) throw std::invalid_argument("versions: the section must be an object");
  std::lock_guard lock(mutex_);
  behaviour_.stepDelay = delayOf(section, "serviceStepMs", behaviour_.stepDelay);
  behaviour_.platformDelay = delayOf(section, "platformDelayMs", behaviour_.platformDelay);
  if (section.isMember("platformError")) {
    if (!section["platformError"].isString()) {
      throw std::invalid_argument("versions.platformError: a text");
    }
    behaviour_.platformError = section["platformError"].asString();
  }
}

void VersionModel::seed() {
  const std::vector<std::pair<const char*, const char*>> versions{
      {"/versions/tavel/core", "4.2.1"},
      {"/versions/tavel/webui", "4.2.0"},
      {"/versions/exciter/dsp", "5.1.12"},
      {"/versions/exciter/fpga/main", "3.0.7"},
      {"/versions/exciter/fpga/modulator", "3.0.2"},
      {"/versions/amplifier/controller/firmware", "2.14"}};
  for (const auto& [path, version] : versions) {
    host().createIfAbsent(path, Resource(ResourceValue(version)));
  }
  host().createIfAbsent("/skyrun/versions/qcore", Resource(ResourceValue("1.9.3")));
  host().createIfAbsent("/skyrun/versions/sdpdriver", Resource(ResourceValue("0.8.1")));
  host().createIfAbsent("/skyrun/versions/proxmox", Resource(ResourceValue("8.1.4")));
  Resource service("lodestarEnabled", ResourceValue(false));
  service.values["serviceState"] = ResourceValue("UNREGISTERED");
  host().createIfAbsent(kQuery, service);
  std::lock_guard lock(mutex_);
  support_.values["isEnabled"] = ResourceValue(false);
  support_.values["port"] = ResourceValue(2222);
  support_.values["connectionId"] = ResourceValue(0);
  support_.values["url"] = ResourceValue("support.example.net");
  support_.values["timeout"] = ResourceValue(3600);
}

void VersionModel::tick(const tavelabi::TimePoint& now) {
  const std::optional<Resource> service = host().peek(kQuery);
  if (!service) return;
  const std::optional<std::string> next = nextState(stateOf(*service));
  {
    std::lock_guard lock(mutex_);
    if (!next) {
      stepSince_.reset();
      return;
    }
    if (!stepSince_) stepSince_ = now;
    if (now - *stepSince_ < behaviour_.stepDelay) return;
    stepSince_.reset();
  }
  update(kQuery, Resource("serviceState", ResourceValue(*next)));
}

Resource VersionModel::updateService(ResourceAction& action) {
  const Resource stored = *host().peek(kQuery);
  Resource changed;
  for (const char* key : {"lodestarEnabled", "companyName", "callSign", "email"}) {
    const auto found = action.resource.values.find(key);
    if (found != action.resource.values.end()) changed.values[key] = found->second;
  }
  const auto email = changed.values.find("email");
  if (email != changed.values.end() &&
      email->second.getStringValue().find('@') == std::string::npos) {
    throw std::invalid_argument("Not an e-mail address: " + email->second.getStringValue());
  }
  Resource merged = stored;
  for (const auto& [key, value] : changed.values) merged.values[key] = value;
  const bool enabled = merged.values.at("lodestarEnabled").getBoolValue();
  if (enabled && (!merged.values.count("companyName") || !merged.values.count("callSign"))) {
    throw std::invalid_argument("The remote service needs a company name and a call sign");
  }
  const std::string state = stateOf(stored);
  if (enabled && (state == "UNREGISTERED" || state == "DISABLED" || state == "DISABLING")) {
    changed.values["serviceState"] = ResourceValue("ENABLING");
  } else if (!enabled && (state == "ENABLED" || state == "ENABLING")) {
    changed.values["serviceState"] = ResourceValue("DISABLING");
  }
  update(kQuery, changed);
  return Resource();
}

std::optional<Resource> VersionModel::askPlatform() {
  Behaviour behaviour;
  {
    std::lock_guard lock(mutex_);
    behaviour = behaviour_;
  }
  std::this_thread::sleep_for(behaviour.platformDelay);
  if (!behaviour.platformError.empty()) return refused(behaviour.platformError);
  return std::nullopt;
}

Resource VersionModel::controlSupport(ResourceAction& action) {
  if (std::optional<Resource> refusal = askPlatform()) return *refusal;
  const Resource& wanted = action.resource;
  const auto port = wanted.values.find("port");
  if (port != wanted.values.end() &&
      (port->second.getType() != ResourceValueType::INT32 || port->second.getIntValue() < 1 ||
       port->second.getIntValue() > 65535)) {
    return refused("The support port must be 1 to 65535");
  }
  const auto timeout = wanted.values.find("timeout");
  if (timeout != wanted.values.end() && (timeout->second.getType() != ResourceValueType::INT32 ||
                                         timeout->second.getIntValue() < 1)) {
    return refused("The support timeout must be at least 1 s");
  }
  std::lock_guard lock(mutex_);
  for (const auto& [key, value] : wanted.values) support_.values[key] = value;
  // A tunnel switched on without a connection gets one from the platform.
  if (support_.values.at("isEnabled").getBoolValue() && !wanted.values.count("connectionId")) {
    support_.values["connectionId"] = ResourceValue(nextConnection_++);
  }
  return Resource();
}

Resource VersionModel::readSupport(ResourceAction& /*action*/) {
  if (std::optional<Resource> refusal = askPlatform()) return *refusal;
  std::lock_guard lock(mutex_);
  return support_;
}

void VersionModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
