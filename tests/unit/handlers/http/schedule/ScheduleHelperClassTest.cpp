#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>

#include "ScheduleTestData.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "support/ScriptedHost.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using namespace std::chrono_literals;

class ScheduleHelperClassTest : public ::testing::Test {
 protected:
  ScheduleHelperClassTest() { ScheduleHelperClass::setPresetList({}); }
  ~ScheduleHelperClassTest() override { ScheduleHelperClass::setPresetList({}); }

  protobuf::PresetSchedule ruleOf(const std::string& json) {
    protobuf::PresetSchedule rule;
    EXPECT_TRUE(JsonOptions::fromJson(json, rule).ok()) << json;
    return rule;
  }

  protobuf::PresetSchedule info(const std::string& ruleId) {
    return ScheduleHelperClass::getCurrentPresetScheduleInfo(req, &host, &plugin, "s1", ruleId);
  }

  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/schedules", "");
  ScriptedHost host;
  FakePluginInfo plugin;
};

TEST_F(ScheduleHelperClassTest, ARuleBecomesTheFlatMapTheHostStores) {
  const protobuf::PresetSchedule rule = ruleOf(
      R"({"startMonth":3,"startDay":4,"endMonth":5,"endDay":6,"startTime":"07:00","endTime":"08:00",)"
      R"("repeatsEverySeconds":900,"sunday":true,"friday":true,"monday":true,"tuesday":false,)"
      R"("broadcastPreset":{"guid":"12"},"selfDelete":true})");
  const auto flat = ScheduleHelperClass::prepareScheduleRule(&rule);
  EXPECT_EQ(flat.at("startMonth").getIntValue(), 3);
  EXPECT_EQ(flat.at("endDay").getIntValue(), 6);
  EXPECT_EQ(flat.at("startTime").getStringValue(), "07:00");
  EXPECT_EQ(flat.at("presetId").getIntValue(), 12);
  EXPECT_TRUE(flat.at("selfDelete").getBoolValue());
  EXPECT_EQ(flat.at("repeatsEverySeconds").getDoubleValue(), 900.0);
  const auto& days = flat.at("dayOfWeek").getListValue();
  ASSERT_EQ(days.size(), 3u);
  EXPECT_EQ(days[0].getStringValue(), "sunday");
  EXPECT_EQ(days[1].getStringValue(), "monday");
  EXPECT_EQ(days[2].getStringValue(), "friday");
  EXPECT_EQ(flat.size(), 10u);
}

TEST_F(ScheduleHelperClassTest, AbsentPartsAreZeroEmptyAndFalseAndNoDayIsAnEmptyList) {
  const protobuf::PresetSchedule rule = ruleOf(R"({"broadcastPreset":{"guid":"3"}})");
  const auto flat = ScheduleHelperClass::prepareScheduleRule(&rule);
  EXPECT_EQ(flat.at("startMonth").getIntValue(), 0);
  EXPECT_EQ(flat.at("startTime").getStringValue(), "");
  EXPECT_FALSE(flat.at("selfDelete").getBoolValue());
  EXPECT_EQ(flat.at("dayOfWeek").getType(), tavelabi::ResourceValueType::LIST_VALUE);
  EXPECT_TRUE(flat.at("dayOfWeek").getListValue().empty());
}

TEST_F(ScheduleHelperClassTest, APresetGuidWithTrailingLettersStoresItsNumber) {
  const protobuf::PresetSchedule rule = ruleOf(R"({"broadcastPreset":{"guid":"42abc"}})");
  EXPECT_EQ(ScheduleHelperClass::prepareScheduleRule(&rule).at("presetId").getIntValue(), 42);
}

TEST_F(ScheduleHelperClassTest, APresetGuidThatIsNoNumberFailsWithStoiAndKeepsErrno) {
  errno = 1234;
  const protobuf::PresetSchedule letters = ruleOf(R"({"broadcastPreset":{"guid":"jazz"}})");
  try {
    ScheduleHelperClass::prepareScheduleRule(&letters);
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "stoi");
  }
  EXPECT_EQ(errno, 1234);
  const protobuf::PresetSchedule huge = ruleOf(R"({"broadcastPreset":{"guid":"99999999999"}})");
  try {
    ScheduleHelperClass::prepareScheduleRule(&huge);
    ADD_FAILURE();
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "stoi");
  }
  EXPECT_EQ(errno, 1234);
  const protobuf::PresetSchedule none;
  EXPECT_THROW(ScheduleHelperClass::prepareScheduleRule(&none), std::invalid_argument);
}

TEST_F(ScheduleHelperClassTest, ADayIsFoundOnlyByItsExactText) {
  const std::vector<ResourceValue> days{ResourceValue("monday"), ResourceValue("Friday")};
  EXPECT_TRUE(ScheduleHelperClass::findDayOfWeek(days, "monday"));
  EXPECT_FALSE(ScheduleHelperClass::findDayOfWeek(days, "friday"));
  EXPECT_FALSE(ScheduleHelperClass::findDayOfWeek({}, "monday"));
}

TEST_F(ScheduleHelperClassTest, ARuleNamesItsPresetWithTheSectionsTheListKnows) {
  host.script("/scheduler/rules", {hostRules({{"7", hostRule(3, {"tuesday", "sunday"})}})});
  ScheduleHelperClass::setPresetList(presetEntries({{"1", "Morning"}, {"3", "Night"}}));
  const protobuf::PresetSchedule rule = info("7");
  EXPECT_EQ(rule.guid().value(), "7");
  EXPECT_EQ(rule.startday().value(), 2);
  EXPECT_TRUE(rule.selfdelete().value());
  EXPECT_TRUE(rule.tuesday().value());
  EXPECT_TRUE(rule.sunday().value());
  EXPECT_TRUE(rule.has_monday());
  EXPECT_FALSE(rule.monday().value());
  EXPECT_EQ(rule.broadcastpreset().guid().value(), "3");
  EXPECT_EQ(rule.broadcastpreset()
                .resources()
                .at("presetName")
                .values()
                .at("value")
                .stringvalue()
                .value(),
            "Night");
}

TEST_F(ScheduleHelperClassTest, APresetTheListLacksGivesOnlyTheGuid) {
  host.script("/scheduler/rules", {hostRules({{"7", hostRule(9, {"monday"})}})});
  EXPECT_EQ(JsonOptions::toJson(info("7").broadcastpreset()), R"({"guid":"9"})");
  ScheduleHelperClass::setPresetList(presetEntries({{"1", "Morning"}}));
  EXPECT_EQ(JsonOptions::toJson(info("7").broadcastpreset()), R"({"guid":"9"})");
}

TEST_F(ScheduleHelperClassTest, AnUnknownRuleOrAMissingKeyIsMapAt) {
  ResourceValue::Map broken = hostRule(1, {"monday"}).getMapValue();
  broken.erase("endTime");
  host.script("/scheduler/rules",
              {hostRules({{"1", hostRule(1, {"monday"})}, {"2", ResourceValue(broken)}})});
  EXPECT_THROW(info("3"), std::out_of_range);
  EXPECT_THROW(info("2"), std::out_of_range);
}

TEST_F(ScheduleHelperClassTest, ThePresetNameOfAFreshStartFails) {
  try {
    ScheduleHelperClass::presetNameOf("1");
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "presetList is not prepared, make sure ScheduleHelperClass::getPresetList is "
                 "called first");
  }
  ScheduleHelperClass::setPresetList(presetEntries({{"1", "Morning"}}));
  EXPECT_EQ(ScheduleHelperClass::presetNameOf("1"), "Morning");
  EXPECT_EQ(ScheduleHelperClass::presetNameOf("2"), std::nullopt);
}

TEST_F(ScheduleHelperClassTest, AHardwareErrorIs500WithoutBodyAndTheFlagIsClearedAllTheSame) {
  Resource waiting(ResourceValue(false));
  Resource refused(ResourceValue(true));
  refused.values["status"] = ResourceValue(3);
  host.script("/scheduler/hardwareResponseStatus", {waiting, waiting, refused});
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  ScheduleHelperClass::getHardwareResponseStatus(req, &host, &plugin, "s1", resp);
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_TRUE(resp->body().empty());
  const auto calls = host.callsOn("/scheduler/hardwareResponseStatus");
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[2].action.action, CCRUD::Read);
  EXPECT_EQ(calls[3].action.action, CCRUD::Update);
  EXPECT_FALSE(calls[3].action.resource.values.at("value").getBoolValue());
  EXPECT_TRUE(host.callsOn("/scheduler/rules").empty());
}

TEST_F(ScheduleHelperClassTest, AConfirmedChangeAnswersTheWholeScheduleAfterSettling) {
  Resource confirmed(ResourceValue(true));
  confirmed.values["status"] = ResourceValue(0);
  host.script("/scheduler/hardwareResponseStatus", {confirmed});
  host.script("/scheduler/rules",
              {hostRules({{"1", hostRule(1, {"monday"})}, {"2", hostRule(2, {"friday"})}})});
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  const auto start = std::chrono::steady_clock::now();
  ScheduleHelperClass::getHardwareResponseStatus(req, &host, &plugin, "s1", resp);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 1990ms);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  protobuf::PresetScheduleList list;
  ASSERT_TRUE(JsonOptions::fromJson(resp->body(), list).ok()) << resp->body();
  ASSERT_EQ(list.schedules_size(), 2);
  EXPECT_EQ(list.schedules(1).guid().value(), "2");
  const auto calls = host.callsOn("/scheduler/hardwareResponseStatus");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[1].action.action, CCRUD::Update);
}

TEST_F(ScheduleHelperClassTest, AStatusWithoutValueIsOutOfRange) {
  host.script("/scheduler/hardwareResponseStatus", {Resource("status", ResourceValue(0))});
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  EXPECT_THROW(ScheduleHelperClass::getHardwareResponseStatus(req, &host, &plugin, "s1", resp),
               std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo::test
