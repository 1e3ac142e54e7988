#include "kelo/handlers/http/users/RoleInfo.h"

#include <utility>

namespace halvor::kelo {

const char* roleName(Role role) {
  switch (role) {
    case Role::ADMINISTRATOR:
      return "ADMINISTRATOR";
    case Role::MANAGE_POWER:
      return "MANAGE_POWER";
    case Role::UNKNOWN_ROLE:
      break;
  }
  return "UNKNOWN_ROLE";
}

RoleInfo::RoleInfo(std::uint32_t roleId, std::string guid, std::string roleName, bool visible)
    : roleId(roleId), guid(std::move(guid)), roleName(std::move(roleName)), visible(visible) {}

tavelabi::ResourceValue RoleInfo::toResourceValue() const {
  return tavelabi::ResourceValue(
      tavelabi::ResourceValue::Map{{"roleId", tavelabi::ResourceValue(static_cast<int>(roleId))},
                                   {"guid", tavelabi::ResourceValue(guid)},
                                   {"roleName", tavelabi::ResourceValue(roleName)},
                                   {"visible", tavelabi::ResourceValue(visible)}});
}

}  // namespace halvor::kelo
