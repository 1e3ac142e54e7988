#include <gtest/gtest.h>

#include "sim/AccessRights.h"

namespace halvor::sim {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

bool allowed(Role role, CCRUD verb, const std::string& path, const Resource& payload = {}) {
  return AccessRights::isAllowed(role, verb, path, "me", payload);
}

TEST(AccessRightsTest, RoleNamesRoundTrip) {
  for (Role role : {Role::Administrator, Role::Operator, Role::ReadOnly}) {
    EXPECT_EQ(role, AccessRights::parseRole(AccessRights::roleName(role)));
  }
  EXPECT_FALSE(AccessRights::parseRole("superuser").has_value());
}

TEST(AccessRightsTest, AdministratorMayDoEverything) {
  for (CCRUD verb : {CCRUD::Command, CCRUD::Create, CCRUD::Read, CCRUD::Update, CCRUD::Delete}) {
    EXPECT_TRUE(allowed(Role::Administrator, verb, "/user/users/bob"));
    EXPECT_TRUE(allowed(Role::Administrator, verb, "/presets/active"));
  }
}

TEST(AccessRightsTest, OperatorMayNotManageUsers) {
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Update, "/presets/active"));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Command, "/command/restartTavel"));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Read, "/user/users/me"));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Read, "/user/users/list/all"));
  EXPECT_FALSE(allowed(Role::Operator, CCRUD::Create, "/user/users/bob"));
  EXPECT_FALSE(allowed(Role::Operator, CCRUD::Update, "/user/users/bob"));
  EXPECT_FALSE(allowed(Role::Operator, CCRUD::Delete, "/user/users/bob"));
  EXPECT_FALSE(allowed(Role::Operator, CCRUD::Command, "/user/command/newUser"));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Command, "/user/command/login"));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Command, "/user/command/logout"));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Command, "/user/command/autoLogin"));
}

TEST(AccessRightsTest, OthersThanAdministratorsReadOnlyTheirOwnUserRecordAndSession) {
  for (Role role : {Role::Operator, Role::ReadOnly}) {
    EXPECT_TRUE(AccessRights::isAllowed(role, CCRUD::Read, "/user/users/me", "me", {}, "s1"));
    EXPECT_FALSE(AccessRights::isAllowed(role, CCRUD::Read, "/user/users/bob", "me", {}, "s1"));
    EXPECT_TRUE(AccessRights::isAllowed(role, CCRUD::Read, "/session/sessions/s1", "me", {}, "s1"));
    EXPECT_FALSE(
        AccessRights::isAllowed(role, CCRUD::Read, "/session/sessions/s2", "me", {}, "s1"));
  }
  EXPECT_TRUE(AccessRights::isAllowed(Role::Administrator, CCRUD::Read, "/session/sessions/s2",
                                      "me", {}, "s1"));
}

TEST(AccessRightsTest, EveryUserMayChangeHisOwnProfileButNothingThatGrantsRights) {
  Resource profile("meterPreference", ResourceValue(std::string("{}")));
  profile.values["username"] = ResourceValue(std::string("me"));
  profile.values["firstName"] = ResourceValue(std::string("Me"));
  for (Role role : {Role::Operator, Role::ReadOnly}) {
    EXPECT_TRUE(allowed(role, CCRUD::Update, "/user/users/me", profile));
    EXPECT_FALSE(allowed(role, CCRUD::Update, "/user/users/bob", profile));
    EXPECT_FALSE(allowed(role, CCRUD::Delete, "/user/users/me", profile));
    EXPECT_FALSE(allowed(role, CCRUD::Create, "/user/users/me", profile));
    for (const char* key : {"roles", "role", "activities", "autoLogin", "password", "guid"}) {
      Resource more = profile;
      more.values[key] = ResourceValue(std::string("x"));
      EXPECT_FALSE(allowed(role, CCRUD::Update, "/user/users/me", more)) << key;
    }
    Resource rename = profile;
    rename.values["username"] = ResourceValue(std::string("boss"));
    EXPECT_FALSE(allowed(role, CCRUD::Update, "/user/users/me", rename));
  }
}

TEST(AccessRightsTest, OperatorMayChangeOnlyItsOwnPassword) {
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Command, "/user/command/changePassword",
                      Resource("username", ResourceValue(std::string("me")))));
  EXPECT_TRUE(allowed(Role::Operator, CCRUD::Command, "/user/command/changePassword"));
  EXPECT_FALSE(allowed(Role::Operator, CCRUD::Command, "/user/command/changePassword",
                       Resource("username", ResourceValue(std::string("other")))));
}

TEST(AccessRightsTest, ReadOnlyMayOnlyReadAndLogInOrOut) {
  EXPECT_TRUE(allowed(Role::ReadOnly, CCRUD::Read, "/presets/active"));
  EXPECT_TRUE(allowed(Role::ReadOnly, CCRUD::Command, "/user/command/login"));
  EXPECT_TRUE(allowed(Role::ReadOnly, CCRUD::Command, "/user/command/logout"));
  EXPECT_TRUE(allowed(Role::ReadOnly, CCRUD::Command, "/resource/list"));
  for (CCRUD verb : {CCRUD::Create, CCRUD::Update, CCRUD::Delete}) {
    EXPECT_FALSE(allowed(Role::ReadOnly, verb, "/presets/active"));
  }
  EXPECT_FALSE(allowed(Role::ReadOnly, CCRUD::Command, "/command/restartTavel"));
  // Every user changes his own password, and no other.
  EXPECT_TRUE(allowed(Role::ReadOnly, CCRUD::Command, "/user/command/changePassword"));
  EXPECT_FALSE(allowed(Role::ReadOnly, CCRUD::Command, "/user/command/changePassword",
                       Resource("username", ResourceValue(std::string("other")))));
}

TEST(AccessRightsTest, VerbNoneIsRefusedToEveryone) {
  EXPECT_FALSE(allowed(Role::Administrator, CCRUD::None, "/x"));
}

TEST(AccessRightsTest, RefusalTextNamesUserVerbAndPath) {
  EXPECT_EQ("User viewer may not Update /presets/active",
            AccessRights::refusalText("viewer", CCRUD::Update, "/presets/active"));
}

TEST(AccessRightsTest, SessionCommandsAreLoginAutoLoginLogout) {
  EXPECT_TRUE(AccessRights::isSessionCommand(CCRUD::Command, "/user/command/login"));
  EXPECT_TRUE(AccessRights::isSessionCommand(CCRUD::Command, "/user/command/autoLogin"));
  EXPECT_TRUE(AccessRights::isSessionCommand(CCRUD::Command, "/user/command/logout"));
  EXPECT_FALSE(AccessRights::isSessionCommand(CCRUD::Read, "/user/command/login"));
  EXPECT_FALSE(AccessRights::isSessionCommand(CCRUD::Command, "/session/command/newSession"));
}

}  // namespace
}  // namespace halvor::sim
