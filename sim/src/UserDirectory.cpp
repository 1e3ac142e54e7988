#include "sim/UserDirectory.h"

#include <string_view>
#include <utility>

#include "sim/PasswordHash.h"

namespace halvor::sim {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

std::optional<Role> roleOfName(const std::string& name) {
  if (name == "ADMINISTRATOR") return Role::Administrator;
  if (name == "MANAGE_POWER") return Role::Operator;
  return AccessRights::parseRole(name);
}

// Administrator is the strongest, read-only the weakest.
int strength(Role role) {
  switch (role) {
    case Role::Administrator:
      return 2;
    case Role::Operator:
      return 1;
    case Role::ReadOnly:
      break;
  }
  return 0;
}

void consider(std::optional<Role> candidate, Role& strongest) {
  if (candidate && strength(*candidate) > strength(strongest)) strongest = *candidate;
}

Resource limits(std::optional<int> minLength, std::optional<int> maxLength,
                std::optional<std::string> pattern, bool required) {
  Resource resource;
  if (minLength) resource.values["minLength"] = ResourceValue(*minLength);
  if (maxLength) resource.values["maxLength"] = ResourceValue(*maxLength);
  if (pattern) resource.values["pattern"] = ResourceValue(*pattern);
  resource.values["required"] = ResourceValue(required);
  return resource;
}

}  // namespace

void UserDirectory::setPassword(const std::string& username, const std::string& password) {
  std::string hash = PasswordHash::make(password);
  std::lock_guard lock(mutex_);
  hashes_[username] = std::move(hash);
}

bool UserDirectory::verify(const std::string& username, const std::string& password) const {
  std::string hash;
  {
    std::lock_guard lock(mutex_);
    auto found = hashes_.find(username);
    if (found == hashes_.end()) return false;
    hash = found->second;
  }
  return PasswordHash::verify(password, hash);
}

void UserDirectory::rename(const std::string& from, const std::string& to) {
  std::lock_guard lock(mutex_);
  auto found = hashes_.find(from);
  if (found == hashes_.end()) return;
  std::string hash = std::move(found->second);
  hashes_.erase(found);
  hashes_[to] = std::move(hash);
}

void UserDirectory::remove(const std::string& username) {
  std::lock_guard lock(mutex_);
  hashes_.erase(username);
}

Role UserDirectory::roleOfRoles(const ResourceValue& roles) {
  Role strongest = Role::ReadOnly;
  if (roles.getType() != ResourceValueType::MAP_VALUE) return strongest;
  for (const auto& [key, entry] : roles.getMapValue()) {
    consider(roleOfName(key), strongest);
    if (entry.getType() != ResourceValueType::MAP_VALUE) continue;
    for (const char* field : {"guid", "roleName"}) {
      auto value = entry.getMapValue().find(field);
      if (value != entry.getMapValue().end() &&
          value->second.getType() == ResourceValueType::STRING) {
        consider(roleOfName(value->second.getStringValue()), strongest);
      }
    }
  }
  return strongest;
}

ResourceValue UserDirectory::rolesOf(Role role) {
  const std::string name = AccessRights::roleName(role);
  ResourceValue::Map entry{{"guid", ResourceValue(name)},
                           {"roleName", ResourceValue(name)},
                           {"visible", ResourceValue(true)}};
  return ResourceValue(ResourceValue::Map{{name, ResourceValue(entry)}});
}

std::vector<std::string> UserDirectory::activitiesOf(Role role) {
  switch (role) {
    case Role::Administrator:
      return {"viewStatus", "controlTransmitter", "manageSettings", "manageUsers"};
    case Role::Operator:
      return {"viewStatus", "controlTransmitter", "manageSettings"};
    case Role::ReadOnly:
      break;
  }
  return {"viewStatus"};
}

std::optional<Resource> UserDirectory::validation(const std::string& path) {
  if (path == kValidationTypesPath) {
    return Resource(ResourceValue(
        std::vector<std::string>{"username", "password", "email", "firstName", "lastName"}));
  }
  // Every read of the host asks here first: no text is made for a path outside the prefix.
  const std::string_view prefix = kValidationsPrefix;
  if (path.compare(0, prefix.size(), prefix) != 0) return std::nullopt;
  const std::string_view type = std::string_view(path).substr(prefix.size());
  if (type == "username") return limits(3, 32, "^[A-Za-z0-9._-]+$", true);
  if (type == "password") return limits(8, 64, std::nullopt, true);
  if (type == "email") return limits(std::nullopt, 254, "^[^@ ]+@[^@ ]+$", false);
  if (type == "firstName" || type == "lastName") {
    return limits(std::nullopt, 64, std::nullopt, false);
  }
  return std::nullopt;
}

}  // namespace halvor::sim
