#include "sim/AccessRights.h"

#include <array>
#include <string_view>

#include "tavelabi/GlobMatcher.h"

namespace halvor::sim {

using tavelabi::CCRUD;

namespace {

enum class Verbs { Read, Write, Command };  // Write: Create, Update, Delete
// OwnUserOnly: a password change of the caller's own (the payload's "username");
// OwnRecordOnly: the path's last segment is the caller's user name or session identifier.
// OwnProfileOnly: an Update of the caller's own user record that changes his name, e-mail or
// preferences and nothing that grants rights.
enum class Grant { No, Yes, OwnUserOnly, OwnRecordOnly, OwnProfileOnly };

struct Rule {
  Verbs verbs;
  const char* glob;
  Grant administrator;
  Grant operatorRole;
  Grant readOnly;
};

// The rights table. The first rule whose verbs and glob fit the action decides; an action that
// no rule fits is refused. Commands count as writes unless a rule above says otherwise.
// Sized by its rules, so that a new rule is one line.
constexpr auto kRules = std::to_array<Rule>({
    // Another user's record, or another session, is the administrator's business alone.
    {Verbs::Read, "/user/users/*", Grant::Yes, Grant::OwnRecordOnly, Grant::OwnRecordOnly},
    {Verbs::Read, "/session/sessions/*", Grant::Yes, Grant::OwnRecordOnly, Grant::OwnRecordOnly},
    {Verbs::Read, "**", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/user/command/login", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/user/command/logout", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/user/command/autoLogin", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/session/command/newSession", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/resource/list", Grant::Yes, Grant::Yes, Grant::Yes},
    // Fetching the platform's network and reading the remote support state change nothing.
    {Verbs::Command, "/qCore/getip", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/command/qcore/readSkyRunRemoteSupport", Grant::Yes, Grant::Yes, Grant::Yes},
    // Reading and exporting the event log change nothing; clearing it is a write.
    {Verbs::Command, "/command/eventlog/getEvents", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/command/eventlog/generateCsv", Grant::Yes, Grant::Yes, Grant::Yes},
    // Listing the presets and working out the schedule's activations change nothing.
    {Verbs::Command, "/presets/generateList", Grant::Yes, Grant::Yes, Grant::Yes},
    {Verbs::Command, "/command/scheduler/calculateActivation/*", Grant::Yes, Grant::Yes,
     Grant::Yes},
    {Verbs::Command, "/user/command/changePassword", Grant::Yes, Grant::OwnUserOnly,
     Grant::OwnUserOnly},
    {Verbs::Write, "/user/users/*", Grant::Yes, Grant::OwnProfileOnly, Grant::OwnProfileOnly},
    {Verbs::Command, "/user/**", Grant::Yes, Grant::No, Grant::No},
    {Verbs::Write, "/user/**", Grant::Yes, Grant::No, Grant::No},
    {Verbs::Command, "**", Grant::Yes, Grant::Yes, Grant::No},
    {Verbs::Write, "**", Grant::Yes, Grant::Yes, Grant::No},
});

// Every match of a glob starts with its text before the first star, so a path without it is
// passed over without the matcher, which measures both texts first: each action walks the table,
// and most rules name a start that a meter's or a device's path lacks.
bool lacksLiteralStart(std::string_view glob, const std::string& path) {
  const std::string_view head = glob.substr(0, glob.find('*'));
  return std::string_view(path).substr(0, head.size()) != head;
}

bool verbsFit(Verbs verbs, CCRUD verb) {
  switch (verbs) {
    case Verbs::Read:
      return verb == CCRUD::Read;
    case Verbs::Write:
      return verb == CCRUD::Create || verb == CCRUD::Update || verb == CCRUD::Delete;
    case Verbs::Command:
      return verb == CCRUD::Command;
  }
  return false;
}

Grant grantOf(const Rule& rule, Role role) {
  switch (role) {
    case Role::Administrator:
      return rule.administrator;
    case Role::Operator:
      return rule.operatorRole;
    case Role::ReadOnly:
      return rule.readOnly;
  }
  return Grant::No;
}

// A password change names its user under "username"; without the key it is the caller's own.
bool namesOwnUser(const std::string& username, const tavelabi::Resource& payload) {
  auto found = payload.values.find("username");
  if (found == payload.values.end()) return true;
  return found->second.getType() == tavelabi::ResourceValueType::STRING &&
         found->second.getStringValue() == username;
}

bool namesOwnRecord(const std::string& path, const std::string& username,
                    const std::string& sessionId) {
  const std::string last = path.substr(path.rfind('/') + 1);
  return (!username.empty() && last == username) || (!sessionId.empty() && last == sessionId);
}

bool changesOwnProfileOnly(CCRUD verb, const std::string& path, const std::string& username,
                           const tavelabi::Resource& payload) {
  static const std::array<const char*, 7> kProfileKeys{"username",
                                                       "firstName",
                                                       "lastName",
                                                       "email",
                                                       "localePreference",
                                                       "meterPreference",
                                                       "dashboardLayoutPreference"};
  if (verb != CCRUD::Update || !namesOwnRecord(path, username, {})) return false;
  for (const auto& [key, value] : payload.values) {
    bool isProfileKey = false;
    for (const char* profileKey : kProfileKeys) isProfileKey = isProfileKey || key == profileKey;
    if (!isProfileKey) return false;
  }
  // A new name is the administrator's business.
  auto name = payload.values.find("username");
  return name == payload.values.end() ||
         (name->second.getType() == tavelabi::ResourceValueType::STRING &&
          name->second.getStringValue() == username);
}

}  // namespace

std::optional<Role> AccessRights::parseRole(const std::string& name) {
  if (name == "administrator") return Role::Administrator;
  if (name == "operator") return Role::Operator;
  if (name == "read-only") return Role::ReadOnly;
  return std::nullopt;
}

const char* AccessRights::roleName(Role role) {
  switch (role) {
    case Role::Administrator:
      return "administrator";
    case Role::Operator:
      return "operator";
    case Role::ReadOnly:
      return "read-only";
  }
  return "?";
}

bool AccessRights::isAllowed(Role role, CCRUD verb, const std::string& path,
                             const std::string& username, const tavelabi::Resource& payload,
                             const std::string& sessionId) {
  for (const Rule& rule : kRules) {
    if (!verbsFit(rule.verbs, verb) || lacksLiteralStart(rule.glob, path)) continue;
    if (!tavelabi::GlobMatcher::globMatch(rule.glob, path.c_str())) continue;
    switch (grantOf(rule, role)) {
      case Grant::Yes:
        return true;
      case Grant::No:
        return false;
      case Grant::OwnUserOnly:
        return namesOwnUser(username, payload);
      case Grant::OwnRecordOnly:
        return namesOwnRecord(path, username, sessionId);
      case Grant::OwnProfileOnly:
        return changesOwnProfileOnly(verb, path, username, payload);
    }
  }
  return false;
}

bool AccessRights::isSessionCommand(CCRUD verb, const std::string& path) {
  return verb == CCRUD::Command &&
         (path == "/user/command/login" || path == "/user/command/logout" ||
          path == "/user/command/autoLogin");
}

std::string AccessRights::refusalText(const std::string& username, CCRUD verb,
                                      const std::string& path) {
  return "User " + username + " may not " + tavelabi::toString(verb) + " " + path;
}

}  // namespace halvor::sim
