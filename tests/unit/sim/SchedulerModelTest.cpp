#include <gtest/gtest.h>
#include <json/value.h>

#include <stdexcept>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/PresetModel.h"
#include "sim/models/SchedulerModel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

class SchedulerModelTest : public ::testing::Test {
 protected:
  SchedulerModelTest() {
    ModelRegistry::install(host, {[] { return std::unique_ptr<Model>(new PresetModel()); },
                                  [] {
                                    auto model = std::make_unique<SchedulerModel>();
                                    Json::Value section;
                                    section["confirmDelayMs"] = 0;
                                    model->applyFixture(section);
                                    return std::unique_ptr<Model>(std::move(model));
                                  }});
  }

  Resource command(const std::string& path, const ResourceValue& value) {
    ResourceAction action(CCRUD::Command, path, Resource(value), nullptr, "");
    return host.processInternalAction(action);
  }

  // The hardware's answer to the last change, after the loop has passed once.
  Resource confirmation() {
    for (int i = 0; i < 3; ++i) host.tickModels(tavelabi::TimePoint{});
    return *host.peek("/scheduler/hardwareResponseStatus");
  }

  ResourceValue::Map rule(const std::string& start, const std::string& end, int preset) {
    return {{"startMonth", 1},
            {"startDay", 1},
            {"endMonth", 12},
            {"endDay", 31},
            {"startTime", start},
            {"endTime", end},
            {"selfDelete", false},
            {"repeatsEverySeconds", 3600.0},
            {"dayOfWeek", ResourceValue(std::vector<std::string>{"wednesday"})},
            {"presetId", preset}};
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(SchedulerModelTest, TimesAndDatesAreReadStrictly) {
  EXPECT_EQ(SchedulerModel::secondsOf("06:30"), 23400);
  EXPECT_EQ(SchedulerModel::secondsOf("23:59:59"), 86399);
  EXPECT_EQ(SchedulerModel::secondsOf("24:00"), std::nullopt);
  EXPECT_EQ(SchedulerModel::secondsOf("25:61"), std::nullopt);
  EXPECT_EQ(SchedulerModel::secondsOf("6:30pm"), std::nullopt);
  EXPECT_EQ(SchedulerModel::dayNumberOf("1970-01-02"), 1);
  EXPECT_EQ(SchedulerModel::dayNumberOf("2023-02-30"), std::nullopt);
  EXPECT_EQ(SchedulerModel::dayNumberOf("2024-02-29"), 19782);
}

TEST_F(SchedulerModelTest, ADaysActivationsComeFromTheRulesInTimeOrder) {
  // 2026-11-23 is a Monday: rules 1 (06:00), 4 (09:00) and 2 (18:00) hold.
  const Resource answer =
      command("/command/scheduler/calculateActivation/day", ResourceValue("2026-11-23"));
  const ResourceValue::Map& found = answer.values.at("value").getMapValue();
  ASSERT_EQ(found.size(), 3u);
  std::vector<std::string> order;
  for (const auto& [key, entry] : found) {
    order.push_back(entry.getMapValue().at("dateTime").getStringValue());
  }
  EXPECT_EQ(order, (std::vector<std::string>{"2026-11-23T06:00:00Z", "2026-11-23T09:00:00Z",
                                             "2026-11-23T18:00:00Z"}));
  EXPECT_THROW(command("/command/scheduler/calculateActivation/day", ResourceValue("Monday")),
               std::invalid_argument);
}

TEST_F(SchedulerModelTest, APeriodsSummaryCountsEachRuleOnEachDate) {
  const Resource answer =
      command("/command/scheduler/calculateActivation/summary",
              ResourceValue(std::vector<std::string>{"2026-11-22", "2026-11-23"}));
  const ResourceValue::Map& found = answer.values.at("value").getMapValue();
  // Sunday: rule 3 three times; Monday: rules 1, 2 and 4 once each.
  ASSERT_EQ(found.size(), 4u);
  const ResourceValue::Map& sunday = found.begin()->second.getMapValue();
  EXPECT_EQ(sunday.at("date").getStringValue(), "2026-11-22");
  EXPECT_EQ(sunday.at("scheduleId").getIntValue(), 3);
  EXPECT_EQ(sunday.at("activationCount").getIntValue(), 3);
}

TEST_F(SchedulerModelTest, AnAddedRuleIsStoredConfirmedAndItsConflictsWorkedOut) {
  const auto conflictsBefore =
      host.peek("/scheduler/conflictEvents")->values.at("value").getListValue().size();
  EXPECT_EQ(conflictsBefore, 1u);  // rules 1 and 4 on Mondays
  ResourceValue::Map added = rule("07:00", "09:00", 5);
  added["dayOfWeek"] = ResourceValue(std::vector<std::string>{"monday"});
  command("/command/scheduler/addRule", ResourceValue(added));
  const Resource confirmed = confirmation();
  EXPECT_TRUE(confirmed.values.at("value").getBoolValue());
  EXPECT_EQ(confirmed.values.at("status").getIntValue(), 0);
  EXPECT_EQ(host.peek("/scheduler/rules")->values.at("value").getMapValue().count("5"), 1u);
  // 07:00 to 09:00 on Mondays meets rule 1 (06:00 to 10:00) and rule 4 (09:00 to 09:30).
  EXPECT_EQ(host.peek("/scheduler/conflictEvents")->values.at("value").getListValue().size(), 3u);
}

TEST_F(SchedulerModelTest, AnImpossibleRuleOrAnUnknownPresetOrRuleIsRefused) {
  command("/command/scheduler/addRule", ResourceValue(rule("25:61", "26:00", 1)));
  EXPECT_EQ(confirmation().values.at("status").getIntValue(), SchedulerModel::kRefusedRule);
  command("/command/scheduler/addRule", ResourceValue(rule("10:00", "09:00", 1)));
  EXPECT_EQ(confirmation().values.at("status").getIntValue(), SchedulerModel::kRefusedRule);
  command("/command/scheduler/addRule", ResourceValue(rule("10:00", "11:00", 99)));
  EXPECT_EQ(confirmation().values.at("status").getIntValue(), SchedulerModel::kRefusedRule);
  command("/command/scheduler/deleteRule", ResourceValue(42));
  EXPECT_EQ(confirmation().values.at("status").getIntValue(), SchedulerModel::kUnknownRule);
  EXPECT_EQ(host.peek("/scheduler/rules")->values.at("value").getMapValue().size(), 4u);
}

TEST_F(SchedulerModelTest, AnEditReplacesTheRuleAndADeleteRemovesIt) {
  ResourceValue::Map edited = rule("11:00", "12:00", 2);
  edited["ruleId"] = ResourceValue(2);
  command("/command/scheduler/editRule", ResourceValue(edited));
  EXPECT_EQ(confirmation().values.at("status").getIntValue(), 0);
  const ResourceValue::Map stored = host.peek("/scheduler/rules")->values.at("value").getMapValue();
  EXPECT_EQ(stored.at("2").getMapValue().at("startTime").getStringValue(), "11:00");
  EXPECT_EQ(stored.at("2").getMapValue().count("ruleId"), 0u);
  command("/command/scheduler/deleteRule", ResourceValue(2));
  EXPECT_EQ(confirmation().values.at("status").getIntValue(), 0);
  EXPECT_EQ(host.peek("/scheduler/rules")->values.at("value").getMapValue().count("2"), 0u);
}

}  // namespace
}  // namespace halvor::sim
