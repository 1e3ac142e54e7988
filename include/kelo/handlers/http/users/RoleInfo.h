#pragma once

#include <cstdint>
#include <string>

#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// The roles the host knows by number. Roles reach the REST routes as records (RoleInfo, the Role
// message), not as these values.
enum class Role : std::uint32_t { UNKNOWN_ROLE = 0, ADMINISTRATOR = 1, MANAGE_POWER = 2 };

// "UNKNOWN_ROLE", "ADMINISTRATOR", "MANAGE_POWER"; the first for a number without a name.
const char* roleName(Role role);

// One role as the host stores it in a user's "roles" map.
class RoleInfo {
 public:
  RoleInfo(std::uint32_t roleId, std::string guid, std::string roleName, bool visible);
  virtual ~RoleInfo() = default;

  // A map of "roleId" (integer), "guid", "roleName" (texts) and "visible" (bool).
  tavelabi::ResourceValue toResourceValue() const;

  std::uint32_t roleId;
  std::string guid;
  std::string roleName;
  bool visible;
};

}  // namespace halvor::kelo
