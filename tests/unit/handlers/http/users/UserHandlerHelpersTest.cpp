#include <gtest/gtest.h>

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"

namespace halvor::kelo {
namespace {

protobuf::User parsed(const std::string& json) {
  protobuf::User user;
  EXPECT_TRUE(JsonOptions::fromJson(json, user).ok()) << json;
  return user;
}

tavelabi::Resource built(const protobuf::User& user) {
  return UserHandlerHelpers::buildTavelabiUserResource(user, nullptr, nullptr, "s");
}

TEST(UserHandlerHelpersTest, MakesTheUserPathWithTheNameAsWritten) {
  EXPECT_EQ("/user/users/ann", UserHandlerHelpers::makeUserResourcePath("ann"));
  EXPECT_EQ("/user/users/a$&b$1$$", UserHandlerHelpers::makeUserResourcePath("a$&b$1$$"));
}

TEST(UserHandlerHelpersTest, TheDefaultInstanceGivesAnEmptyResource) {
  EXPECT_TRUE(built(protobuf::User::default_instance()).values.empty());
}

TEST(UserHandlerHelpersTest, WritesOnlyTheFieldsThatAreSetAndAlwaysTheMeterPreference) {
  const tavelabi::Resource resource = built(parsed(R"({"lastName":"Doe","autoLogin":false})"));
  EXPECT_EQ("Doe", resource.values.at("lastName").getStringValue());
  EXPECT_FALSE(resource.values.at("autoLogin").getBoolValue());
  EXPECT_EQ("{}", resource.values.at("meterPreference").getStringValue());
  for (const char* key :
       {"username", "password", "guid", "firstName", "email", "loginTimeout", "loginTimeoutEnabled",
        "activities", "roles", "localePreference", "dashboardLayoutPreference"}) {
    EXPECT_EQ(0u, resource.values.count(key)) << key;
  }
}

TEST(UserHandlerHelpersTest, WritesEveryPlainFieldThatIsSet) {
  const tavelabi::Resource resource =
      built(parsed(R"({"guid":"g","firstName":"F","email":"e@x","username":"u","password":"p",)"
                   R"("loginTimeout":60,"loginTimeoutEnabled":true,"activities":["a","b"]})"));
  EXPECT_EQ("p", resource.values.at("password").getStringValue());
  EXPECT_EQ(60, resource.values.at("loginTimeout").getIntValue());
  EXPECT_TRUE(resource.values.at("loginTimeoutEnabled").getBoolValue());
  ASSERT_EQ(2u, resource.values.at("activities").getListValue().size());
  EXPECT_EQ("b", resource.values.at("activities").getListValue()[1].getStringValue());
}

TEST(UserHandlerHelpersTest, RolesBecomeAMapUnderEachGuid) {
  const tavelabi::Resource resource = built(
      parsed(R"({"roles":[{"guid":"r1","roleName":"Admin","visible":true},{"roleName":"X"}]})"));
  const auto& roles = resource.values.at("roles").getMapValue();
  ASSERT_EQ(2u, roles.size());
  EXPECT_EQ("Admin", roles.at("r1").getMapValue().at("roleName").getStringValue());
  EXPECT_TRUE(roles.at("r1").getMapValue().at("visible").getBoolValue());
  EXPECT_EQ(1u, roles.at("").getMapValue().size());
}

TEST(UserHandlerHelpersTest, LocaleZeroWritesNoKeyAndAnotherItsName) {
  EXPECT_EQ(0u, built(parsed(R"({"userPreferences":{"localePreference":"UNKNOWN_LOCALE"}})"))
                    .values.count("localePreference"));
  EXPECT_EQ("de_DE", built(parsed(R"({"userPreferences":{"localePreference":"de_DE"}})"))
                         .values.at("localePreference")
                         .getStringValue());
}

TEST(UserHandlerHelpersTest, TheDashboardLayoutIsWrittenAsJsonWhenSet) {
  const tavelabi::Resource resource =
      built(parsed(R"({"userPreferences":{"dashboardLayoutPreference":{"columns":2}}})"));
  EXPECT_EQ(R"({"columns":2})", resource.values.at("dashboardLayoutPreference").getStringValue());
}

TEST(UserHandlerHelpersTest, TheSanitisedMeterPreferenceKeepsPathsOnlyInOrder) {
  protobuf::MeterCollectionList list;
  ASSERT_TRUE(JsonOptions::fromJson(
                  R"({"collections":[{"path":"/c","label":"L","groups":[{"path":"/c/g","guid":"x",)"
                  R"("meters":[{"path":"/c/g/b","units":"W","label":"B","min":1},{"path":"/c/g/a",)"
                  R"("value":{"values":{"value":{"doubleValue":2,"type":"DOUBLE"}}}}]}]},)"
                  R"({"path":"/d"}]})",
                  list)
                  .ok());
  EXPECT_EQ(R"({"values":[{"meterGroups":[{"meters":[{"path":"/c/g/b"},{"path":"/c/g/a"}],)"
            R"("path":"/c/g"}],"path":"/c"},{"path":"/d"}]})",
            UserHandlerHelpers::generateSanitizedMeterPreferenceJsonString(list));
}

}  // namespace
}  // namespace halvor::kelo
