#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/AccessRights.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The host's user database beside the tree: each user's salted password hash (never in the
// tree, never answered), and the rules that make a user record complete (its rights role from
// its "roles", its activities, the validation records of user fields). The records themselves
// stay in the tree at "/user/users/<name>". Safe from any number of threads.
class UserDirectory {
 public:
  static constexpr const char* kListPath = "/user/users/list/all";
  static constexpr const char* kValidationsPrefix = "/user/validations/";
  static constexpr const char* kValidationTypesPath = "/user/validations/validationTypes";

  // Hashes the password (outside the lock: hashing takes milliseconds) and keeps the hash.
  void setPassword(const std::string& username, const std::string& password);
  // Whether the user has a password and `password` is it.
  bool verify(const std::string& username, const std::string& password) const;
  void rename(const std::string& from, const std::string& to);
  void remove(const std::string& username);

  // The rights role of a "roles" map (keys or entries naming "administrator"/"ADMINISTRATOR",
  // "operator"/"MANAGE_POWER", "read-only"): the strongest one named; read-only when none is.
  static Role roleOfRoles(const tavelabi::ResourceValue& roles);
  // A one-entry "roles" map for the role, as seeded users carry it.
  static tavelabi::ResourceValue rolesOf(Role role);
  static std::vector<std::string> activitiesOf(Role role);

  // "/user/validations/validationTypes" and "/user/validations/<type>": the answers, or nothing
  // for another path.
  static std::optional<tavelabi::Resource> validation(const std::string& path);

 private:
  mutable std::mutex mutex_;
  std::unordered_map<std::string, std::string> hashes_;
};

}  // namespace halvor::sim
