#include <gtest/gtest.h>

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/meters/MeterResources.h"
#include "unit/handlers/http/users/UserResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::MeterResources;
using test::UserResources;

constexpr const char* kPreference =
    R"({"values":[{"path":"/meters/rf/list","meterGroups":[{"path":"/meters/rf/output",)"
    R"("meters":[{"path":"/meters/rf/output/forwardPower"}]}]}]})";

class EndpointHelpersTest : public ::testing::Test {
 protected:
  EndpointHelpersTest() {
    UserResources::answerValidations(host);
    host.answer("/meters/rf/list",
                MeterResources::listing({"/meters/rf/output"}, {{"label", "RF"}}));
    host.answer("/meters/rf/output",
                MeterResources::listing({"/meters/rf/output/forwardPower"}, {{"label", "Out"}}));
    host.answer("/meters/rf/output/forwardPower",
                MeterResources::meter("/meters/rf/output/forwardPower", 4990.5));
  }

  std::shared_ptr<protobuf::User> show(const Resource& user, bool byPass) {
    host.answer("/user/users/ann", user);
    return EndpointHelpers::getCurrentUserInfo(test::makeRequest(web::Get, "/", ""), &host, &info,
                                               "client", "/user/users/ann", byPass);
  }

  test::RecordingHost host;
  test::FakePluginInfo info;
};

TEST_F(EndpointHelpersTest, ReadsTheUserThenTheValidationTypesThenEachTypeThenTheMeters) {
  Resource user = UserResources::user("ann");
  user.values["meterPreference"] = ResourceValue(std::string(kPreference));
  show(user, false);
  std::vector<std::string> paths;
  for (const auto& action : host.actions()) paths.push_back(action.path);
  EXPECT_EQ((std::vector<std::string>{"/user/users/ann", "/user/validations/validationTypes",
                                      "/user/validations/password", "/meters/rf/list",
                                      "/meters/rf/output", "/meters/rf/output/forwardPower"}),
            paths);
}

TEST_F(EndpointHelpersTest, EveryReadCarriesTheActivityFlagItWasGiven) {
  Resource user = UserResources::user("ann");
  user.values["meterPreference"] = ResourceValue(std::string(kPreference));
  for (bool byPass : {true, false}) {
    host.clearActions();
    show(user, byPass);
    for (const auto& action : host.actions()) {
      EXPECT_EQ(action.action, CCRUD::Read);
      EXPECT_EQ(action.sessionId, "client");
      EXPECT_EQ(UserResources::flagOf(action), byPass ? 1 : 0) << action.path;
    }
  }
}

TEST_F(EndpointHelpersTest, TheReplyHoldsNoPasswordAndNoGuid) {
  const auto user = show(UserResources::user("ann"), false);
  EXPECT_FALSE(user->has_password());
  EXPECT_FALSE(user->has_guid());
  const std::string json = JsonOptions::toJson(*user);
  EXPECT_EQ(std::string::npos, json.find("clear-ann"));
  EXPECT_EQ(std::string::npos, json.find("guid-ann"));
}

TEST_F(EndpointHelpersTest, FillsRolesActivitiesValidationsAndTheOptionalWrappers) {
  const auto user = show(UserResources::user("ann"), false);
  ASSERT_EQ(1, user->roles_size());
  EXPECT_EQ("r1", user->roles(0).guid().value());
  EXPECT_EQ("admin", user->roles(0).rolename().value());
  EXPECT_TRUE(user->roles(0).visible().value());
  ASSERT_EQ(2, user->activities_size());
  EXPECT_EQ("manageUsers", user->activities(1).value());
  EXPECT_EQ(8, user->validations().at("password").minlength().value());
  EXPECT_EQ("ann", user->username().value());
  EXPECT_EQ("First", user->firstname().value());
  EXPECT_FALSE(user->has_lastname());
  EXPECT_TRUE(user->autologin().value());
  EXPECT_EQ(300, user->logintimeout().value());
  EXPECT_FALSE(user->has_logintimeoutenabled());
}

TEST_F(EndpointHelpersTest, AUserWithoutDashboardLayoutGetsPreferencesWithoutIt) {
  const auto user = show(UserResources::user("ann"), false);
  EXPECT_FALSE(user->userpreferences().has_dashboardlayoutpreference());
  EXPECT_EQ(0, user->userpreferences().localepreference());
}

TEST_F(EndpointHelpersTest, ParsesTheLocaleByNameAndAnUnknownNameAsZero) {
  Resource user = UserResources::user("ann");
  user.values["localePreference"] = ResourceValue(std::string("fr_FR"));
  EXPECT_EQ(protobuf::fr_FR, show(user, false)->userpreferences().localepreference());
  user.values["localePreference"] = ResourceValue(std::string("xx_XX"));
  EXPECT_EQ(0, show(user, false)->userpreferences().localepreference());
}

TEST_F(EndpointHelpersTest, ParsesTheDashboardLayoutFromItsJson) {
  Resource user = UserResources::user("ann");
  user.values["dashboardLayoutPreference"] =
      ResourceValue(std::string(R"({"columns":3,"tiles":[{"id":"t1","row":2}]})"));
  const auto layout = show(user, false)->userpreferences().dashboardlayoutpreference();
  EXPECT_EQ(3, layout.columns().value());
  ASSERT_EQ(1, layout.tiles_size());
  EXPECT_EQ(2, layout.tiles(0).row().value());
}

TEST_F(EndpointHelpersTest, TheMeterPreferenceIsReadBackWithLiveReadings) {
  Resource user = UserResources::user("ann");
  user.values["meterPreference"] = ResourceValue(std::string(kPreference));
  const auto preference = show(user, false)->userpreferences().meterpreference();
  ASSERT_EQ(1, preference.collections_size());
  EXPECT_EQ("RF", preference.collections(0).label().value());
  const protobuf::Meter& meter = preference.collections(0).groups(0).meters(0);
  EXPECT_EQ("W", meter.units().value());
  EXPECT_DOUBLE_EQ(4990.5, meter.value().values().at("value").doublevalue().value());
}

TEST_F(EndpointHelpersTest, AnEmptyMeterPreferenceThrowsJsonParserException) {
  Resource user = UserResources::user("ann");
  user.values["meterPreference"] = ResourceValue(std::string());
  EXPECT_THROW(show(user, false), tavelabi::JsonParserException);
}

TEST_F(EndpointHelpersTest, AnEmptyRoleMapGivesNoRolesWithoutAnError) {
  Resource user = UserResources::user("ann");
  user.values["roles"] = ResourceValue(ResourceValue::Map{});
  EXPECT_EQ(0, show(user, false)->roles_size());
}

TEST_F(EndpointHelpersTest, AUserWithoutActivitiesEndsWithMapAt) {
  Resource user = UserResources::user("ann");
  user.values.erase("activities");
  EXPECT_THROW(show(user, false), std::out_of_range);
}

TEST_F(EndpointHelpersTest, ADeadSessionOnANestedReadEndsTheWholeCall) {
  host.fail("/user/validations/password",
            [] { throw tavelabi::NonExistentSessionException("Session client does not exist"); });
  EXPECT_THROW(show(UserResources::user("ann"), true), tavelabi::NonExistentSessionException);
}

}  // namespace
}  // namespace halvor::kelo
