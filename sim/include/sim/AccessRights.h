#pragma once

#include <optional>
#include <string>

#include "tavelabi/Resource.h"
#include "tavelabi/Types.h"

namespace halvor::sim {

enum class Role { Administrator, Operator, ReadOnly };

// The rights table of the host, in one place. See docs/SIMULATOR.md for the table in prose.
class AccessRights {
 public:
  // "administrator", "operator", "read-only".
  static std::optional<Role> parseRole(const std::string& name);
  static const char* roleName(Role role);

  // Whether a logged-in user of the role may run the verb on the path. The payload decides
  // only for a password change, which an operator may make for itself alone; the session's
  // identifier only for a read of a session, which others than administrators may make of
  // their own session alone.
  static bool isAllowed(Role role, tavelabi::CCRUD verb, const std::string& path,
                        const std::string& username, const tavelabi::Resource& payload,
                        const std::string& sessionId = {});
  // The commands that a session may run before it is logged in: login, autoLogin, logout.
  static bool isSessionCommand(tavelabi::CCRUD verb, const std::string& path);
  // "User <name> may not <Verb> <path>".
  static std::string refusalText(const std::string& username, tavelabi::CCRUD verb,
                                 const std::string& path);
};

}  // namespace halvor::sim
