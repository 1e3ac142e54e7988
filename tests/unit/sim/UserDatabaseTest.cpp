#include <gtest/gtest.h>

#include "SimTestSupport.h"
#include "sim/PasswordHash.h"
#include "sim/SimTavel.h"
#include "sim/UserDirectory.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/Session.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::AuthorizationFailure;
using tavelabi::CCRUD;
using tavelabi::NonExistentResourcePathException;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource credentials(const std::string& user, const std::string& password) {
  Resource resource;
  resource.values["username"] = ResourceValue(user);
  resource.values["password"] = ResourceValue(password);
  return resource;
}

std::string loginAs(HostWithUsers& h, const std::string& user, const std::string& password) {
  const std::string session = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                                  .values.at("sessionId")
                                  .getStringValue();
  h.run(CCRUD::Command, "/user/command/login", session, credentials(user, password));
  return session;
}

ResourceValue::Map roleEntry(const std::string& name) {
  return {{"guid", ResourceValue(name)},
          {"roleName", ResourceValue(name)},
          {"visible", ResourceValue(true)}};
}

TEST(PasswordHashTest, VerifiesTheRightPasswordAndNoOther) {
  const std::string stored = PasswordHash::make("s3cret");
  EXPECT_TRUE(PasswordHash::verify("s3cret", stored));
  EXPECT_FALSE(PasswordHash::verify("s3creT", stored));
  EXPECT_FALSE(PasswordHash::verify("", stored));
}

TEST(PasswordHashTest, SaltsEachHashSoTheSamePasswordGivesTwoTexts) {
  const std::string first = PasswordHash::make("same");
  const std::string second = PasswordHash::make("same");
  EXPECT_NE(first, second);
  EXPECT_EQ(std::string::npos, first.find("same"));
  EXPECT_EQ(0u, first.rfind("pbkdf2-sha256$", 0));
}

TEST(PasswordHashTest, RefusesTextsOfAnotherForm) {
  EXPECT_FALSE(PasswordHash::verify("pw", "pw"));
  EXPECT_FALSE(PasswordHash::verify("pw", "pbkdf2-sha256$x$00$00"));
  EXPECT_FALSE(PasswordHash::verify("pw", "pbkdf2-sha256$10$zz$00"));
}

TEST(UserDirectoryTest, TheStrongestRoleNamedInTheRolesMapDecides) {
  ResourceValue::Map roles{{"read-only", ResourceValue(roleEntry("read-only"))},
                           {"x", ResourceValue(roleEntry("MANAGE_POWER"))}};
  EXPECT_EQ(Role::Operator, UserDirectory::roleOfRoles(ResourceValue(roles)));
  roles["administrator"] = ResourceValue(roleEntry("administrator"));
  EXPECT_EQ(Role::Administrator, UserDirectory::roleOfRoles(ResourceValue(roles)));
  EXPECT_EQ(Role::ReadOnly, UserDirectory::roleOfRoles(ResourceValue(ResourceValue::Map{})));
}

TEST(UserDirectoryTest, AnswersTheValidationTypesAndEachRecord) {
  const auto types = UserDirectory::validation("/user/validations/validationTypes");
  ASSERT_TRUE(types.has_value());
  for (const ResourceValue& type : types->values.at("value").getListValue()) {
    EXPECT_TRUE(UserDirectory::validation("/user/validations/" + type.getStringValue()))
        << type.getStringValue();
  }
  EXPECT_EQ(8, UserDirectory::validation("/user/validations/password")
                   ->values.at("minLength")
                   .getIntValue());
  EXPECT_FALSE(UserDirectory::validation("/user/validations/nothing").has_value());
}

TEST(UserDatabaseTest, TheTreeHoldsNoPasswordInAnyFormAndLoginStillWorks) {
  HostWithUsers h;
  for (const std::string& path : h.host->listPaths("/user/**")) {
    const Resource stored = *h.host->peek(path);
    EXPECT_EQ(0u, stored.values.count("password")) << path;
    for (const auto& [key, value] : stored.values) {
      if (value.getType() == tavelabi::ResourceValueType::STRING) {
        EXPECT_EQ(std::string::npos, value.getStringValue().find("-pw")) << path << " " << key;
      }
    }
  }
  EXPECT_NO_THROW(loginAs(h, "viewer", "viewer-pw"));
  EXPECT_THROW(loginAs(h, "viewer", "admin-pw"), AuthorizationFailure);
}

TEST(UserDatabaseTest, OnlyAnAdministratorReadsAnotherUsersRecordOrSession) {
  HostWithUsers h;
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/user/users/viewer", h.viewerSession));
  EXPECT_THROW(h.run(CCRUD::Read, "/user/users/admin", h.viewerSession), AuthorizationFailure);
  EXPECT_THROW(h.run(CCRUD::Read, "/user/users/viewer", h.operatorSession), AuthorizationFailure);
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/user/users/oper", h.adminSession));
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/session/sessions/" + h.viewerSession, h.viewerSession));
  EXPECT_THROW(h.run(CCRUD::Read, "/session/sessions/" + h.adminSession, h.viewerSession),
               AuthorizationFailure);
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/session/sessions/" + h.viewerSession, h.adminSession));
}

TEST(UserDatabaseTest, AGlobOverTheUsersShowsOthersThanAdministratorsTheirOwnRecordAlone) {
  HostWithUsers h;
  const Resource viewer = h.run(CCRUD::Read, "/user/**", h.viewerSession);
  ASSERT_EQ(1u, viewer.values.size());
  EXPECT_EQ(1u, viewer.values.count("/user/users/viewer"));
  EXPECT_EQ(3u, h.run(CCRUD::Read, "/user/**", h.adminSession).values.size());
}

TEST(UserDatabaseTest, ListsEveryUserByName) {
  HostWithUsers h;
  const Resource list = h.run(CCRUD::Read, "/user/users/list/all", h.viewerSession);
  std::vector<std::string> names;
  for (const ResourceValue& name : list.values.at("value").getListValue()) {
    names.push_back(name.getStringValue());
  }
  EXPECT_EQ((std::vector<std::string>{"admin", "oper", "viewer"}), names);
}

TEST(UserDatabaseTest, NewUserTakesItsRightsFromItsRolesAndKeepsThePasswordHashed) {
  HostWithUsers h;
  Resource payload = credentials("nina", "nina-secret");
  payload.values["roles"] =
      ResourceValue(ResourceValue::Map{{"operator", ResourceValue(roleEntry("operator"))}});
  const Resource answer = h.run(CCRUD::Command, "/user/command/newUser", h.adminSession, payload);
  EXPECT_EQ("nina", answer.values.at("username").getStringValue());
  const Resource stored = *h.host->peek("/user/users/nina");
  EXPECT_EQ("operator", stored.values.at("role").getStringValue());
  EXPECT_EQ(0u, stored.values.count("password"));
  EXPECT_EQ(36u, stored.values.at("guid").getStringValue().size());
  EXPECT_FALSE(stored.values.at("activities").getListValue().empty());
  const std::string session = loginAs(h, "nina", "nina-secret");
  // An operator writes outside "/user/**", which a read-only user may not.
  EXPECT_NO_THROW(h.run(CCRUD::Create, "/system/x", session, Resource(ResourceValue(1))));
}

TEST(UserDatabaseTest, ACreatedUserRecordIsCompletedLikeANewUser) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/user/users/zed", h.adminSession, credentials("ignored", "zed-secret"));
  const Resource stored = *h.host->peek("/user/users/zed");
  EXPECT_EQ("zed", stored.values.at("username").getStringValue());
  EXPECT_EQ("read-only", stored.values.at("role").getStringValue());
  EXPECT_EQ(1u, stored.values.at("roles").getMapValue().count("read-only"));
  EXPECT_EQ(0u, stored.values.count("password"));
  EXPECT_NO_THROW(loginAs(h, "zed", "zed-secret"));
}

TEST(UserDatabaseTest, NewUserRefusesANameInUseAndOthersThanAdministrators) {
  HostWithUsers h;
  EXPECT_THROW(
      h.run(CCRUD::Command, "/user/command/newUser", h.adminSession, credentials("viewer", "x")),
      std::invalid_argument);
  EXPECT_THROW(
      h.run(CCRUD::Command, "/user/command/newUser", h.operatorSession, credentials("other", "x")),
      AuthorizationFailure);
}

TEST(UserDatabaseTest, AnUpdateWithAPasswordHashesItAndAnUpdateWithAnotherNameRenames) {
  HostWithUsers h;
  h.run(CCRUD::Update, "/user/users/viewer", h.adminSession, credentials("viewer", "fresh-pw"));
  EXPECT_EQ(0u, h.host->peek("/user/users/viewer")->values.count("password"));
  EXPECT_NO_THROW(loginAs(h, "viewer", "fresh-pw"));
  EXPECT_THROW(loginAs(h, "viewer", "viewer-pw"), AuthorizationFailure);

  h.run(CCRUD::Update, "/user/users/viewer", h.adminSession,
        Resource("username", ResourceValue(std::string("watcher"))));
  EXPECT_FALSE(h.host->peek("/user/users/viewer").has_value());
  EXPECT_EQ("watcher", h.host->peek("/user/users/watcher")->values.at("username").getStringValue());
  EXPECT_NO_THROW(loginAs(h, "watcher", "fresh-pw"));
  // The renamed user's session goes on under the new name, with its rights.
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/user/users/watcher", h.viewerSession));
  EXPECT_THROW(h.run(CCRUD::Update, "/user/users/watcher", h.adminSession,
                     Resource("username", ResourceValue(std::string("admin")))),
               std::invalid_argument);
}

TEST(UserDatabaseTest, DeletingAUserForgetsItsPassword) {
  HostWithUsers h;
  h.run(CCRUD::Delete, "/user/users/oper", h.adminSession);
  EXPECT_THROW(loginAs(h, "oper", "oper-pw"), AuthorizationFailure);
  h.host->addUser({"oper", "other-pw", "operator", {}});
  EXPECT_THROW(loginAs(h, "oper", "oper-pw"), AuthorizationFailure);
}

TEST(UserDatabaseTest, ChangePasswordOfAnUnknownUserIsRefused) {
  HostWithUsers h;
  Resource change("username", ResourceValue(std::string("ghost")));
  change.values["newPassword"] = ResourceValue(std::string("x"));
  EXPECT_THROW(h.run(CCRUD::Command, "/user/command/changePassword", h.adminSession, change),
               NonExistentResourcePathException);
}

TEST(UserDatabaseTest, AutoLoginNeedsARuleAndTheUsersOwnFlag) {
  HostWithUsers h;
  h.host->addAutoLoginRule({"kiosk", "viewer"});
  auto autoLogin = [&] {
    const std::string session = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                                    .values.at("sessionId")
                                    .getStringValue();
    return h.run(CCRUD::Command, "/user/command/autoLogin", session,
                 Resource("host", ResourceValue(std::string("kiosk:7000"))));
  };
  EXPECT_EQ("viewer", autoLogin().values.at("username").getStringValue());
  h.run(CCRUD::Update, "/user/users/viewer", h.adminSession,
        Resource("autoLogin", ResourceValue(false)));
  EXPECT_THROW(autoLogin(), AuthorizationFailure);
}

}  // namespace
}  // namespace halvor::sim
