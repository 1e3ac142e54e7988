#include <gtest/gtest.h>

#include <stdexcept>

#include "ScheduleTestData.h"
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/schedule/GetScheduleHandler.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "support/HandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

ResourceValue activation(const std::string& dateTime, int scheduleId, int presetId) {
  return ResourceValue(ResourceValue::Map{
      {"dateTime", dateTime}, {"scheduleId", scheduleId}, {"presetId", presetId}});
}

class GetScheduleHandlerTest : public HandlerTest<GetScheduleHandler> {
 protected:
  GetScheduleHandlerTest() {
    ScheduleHelperClass::setPresetList({});
    host.answer("/presets/generateList", presetListAnswer({{"1", "Morning"}, {"3", "Night"}}));
  }
  ~GetScheduleHandlerTest() override { ScheduleHelperClass::setPresetList({}); }

  web::HttpResponsePtr get(const std::string& path, const std::string& query = "") {
    return callMember(&GetScheduleHandler::getScheduleHandler, makeRequest(web::Get, path, query),
                      "s1");
  }
};

TEST_F(GetScheduleHandlerTest, AnEmptyRuleMapIsAnEmptyListWith200) {
  host.answer("/scheduler/rules", hostRules({}));
  const web::HttpResponsePtr resp = get("/1/api/schedules");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), "{}");
}

TEST_F(GetScheduleHandlerTest, TheListRefreshesThePresetNamesAndLeavesAFailingRuleOut) {
  ResourceValue::Map broken = hostRule(1, {"monday"}).getMapValue();
  broken.erase("presetId");
  host.answer("/scheduler/rules", hostRules({{"1", hostRule(1, {"monday"})},
                                             {"2", ResourceValue(broken)},
                                             {"3", hostRule(3, {"friday"})}}));
  const web::HttpResponsePtr resp = get("/1/api/schedules");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  protobuf::PresetScheduleList list;
  ASSERT_TRUE(JsonOptions::fromJson(resp->body(), list).ok());
  ASSERT_EQ(list.schedules_size(), 2);
  EXPECT_EQ(list.schedules(0).guid().value(), "1");
  EXPECT_EQ(list.schedules(1).guid().value(), "3");
  EXPECT_EQ(ScheduleHelperClass::presetList()->size(), 2u);
  EXPECT_EQ(host.actionsOn("/presets/generateList").at(0).action, CCRUD::Command);
}

TEST_F(GetScheduleHandlerTest, TheDayFailsOnAFreshStartAndWorksAfterOneListOfRules) {
  host.answer("/command/scheduler/calculateActivation/day",
              Resource(ResourceValue(
                  ResourceValue::Map{{"00000", activation("2026-11-23T06:00:00Z", 1, 1)},
                                     {"00001", activation("2026-11-23T18:00:00Z", 2, 5)}})));
  try {
    get("/1/api/schedules/day", "date=2026-11-23");
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "presetList is not prepared, make sure ScheduleHelperClass::getPresetList is "
                 "called first");
  }
  host.answer("/scheduler/rules", hostRules({}));
  get("/1/api/schedules");
  const web::HttpResponsePtr resp = get("/1/api/schedules/day", "date=2026-11-23");
  EXPECT_EQ(
      resp->body(),
      R"({"activations":[{"dateTime":"2026-11-23T06:00:00Z","scheduleId":"1","presetName":"Morning"},)"
      R"({"dateTime":"2026-11-23T18:00:00Z","scheduleId":"2"}]})");
  const auto days = host.actionsOn("/command/scheduler/calculateActivation/day");
  EXPECT_EQ(days.back().resource.values.at("value").getStringValue(), "2026-11-23");
}

TEST_F(GetScheduleHandlerTest, ADayWithoutActivationsDoesNotNeedThePresetList) {
  host.answer("/command/scheduler/calculateActivation/day",
              Resource(ResourceValue(ResourceValue::Map{})));
  EXPECT_EQ(get("/1/api/schedules/day", "date=2026-11-23")->body(), "{}");
}

TEST_F(GetScheduleHandlerTest, TheSummaryCountsEachRuleWithItsPresetName) {
  ScheduleHelperClass::setPresetList(presetEntries({{"3", "Night"}}));
  host.answer("/command/scheduler/calculateActivation/summary",
              Resource(ResourceValue(ResourceValue::Map{
                  {"00000", ResourceValue(ResourceValue::Map{{"date", "2026-11-21"},
                                                             {"scheduleId", 2},
                                                             {"presetId", 3},
                                                             {"activationCount", 4}})}})));
  const web::HttpResponsePtr resp =
      get("/1/api/schedules/summary", "startDate=2026-11-21&endDate=2026-11-22");
  EXPECT_EQ(
      resp->body(),
      R"({"summaries":[{"date":"2026-11-21","scheduleId":"2","presetName":"Night","activationCount":4}]})");
  const auto dates = host.actionsOn("/command/scheduler/calculateActivation/summary")
                         .at(0)
                         .resource.values.at("value")
                         .getListValue();
  ASSERT_EQ(dates.size(), 2u);
  EXPECT_EQ(dates[0].getStringValue(), "2026-11-21");
  EXPECT_EQ(dates[1].getStringValue(), "2026-11-22");
}

TEST_F(GetScheduleHandlerTest, MissingQueryKeysAreNamedStartDateFirst) {
  const auto missing = [this](const std::string& path, const std::string& query) {
    try {
      get(path, query);
    } catch (const RequestMissingQueryParameter& error) {
      return std::string(error.what());
    }
    return std::string("no failure");
  };
  EXPECT_EQ(missing("/1/api/schedules/day", ""), "Request missing query parameter: date.");
  EXPECT_EQ(missing("/1/api/schedules/summary", ""), "Request missing query parameter: startDate.");
  EXPECT_EQ(missing("/1/api/schedules/summary", "startDate=a"),
            "Request missing query parameter: endDate.");
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetScheduleHandlerTest, TheConflictsAreTheHostsResource) {
  host.answer("/scheduler/conflictEvents", Resource(ResourceValue("rules 1 and 4")));
  EXPECT_EQ(get("/1/api/schedules/conflicts")->body(),
            R"({"values":{"value":{"stringValue":"rules 1 and 4","type":"STRING"}}})");
}

TEST_F(GetScheduleHandlerTest, AnotherPathIsABadPath) {
  try {
    get("/1/api/schedules/other");
    ADD_FAILURE();
  } catch (const BadPathException& error) {
    EXPECT_STREQ(error.what(), "Unknown path: /1/api/schedules/other");
  }
}

}  // namespace
}  // namespace halvor::kelo::test
