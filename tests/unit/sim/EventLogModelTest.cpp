#include <gtest/gtest.h>
#include <json/reader.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/HostSeed.h"
#include "sim/models/EventLogModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;

std::unique_ptr<Model> makeEventLog() { return std::make_unique<EventLogModel>(); }

Json::Value parseJson(const std::string& text) {
  Json::Value root;
  std::istringstream in(text);
  in >> root;
  return root;
}

Fixture fixtureWith(const Json::Value& section) {
  Fixture fixture;
  fixture.source = "test fixture";
  fixture.sections.emplace_back("eventlog", section);
  return fixture;
}

// Thirty events: id n at second 1000 + n, of type n % 6 + 1, on amplifier (n % 4) + 1, the
// description "event <n>", severity by n % 4, the event names and values in reverse order.
Json::Value thirtyEvents() {
  const char* types[] = {"PRESET_CHANGE",       "POWER_CHANGE", "FREQUENCY_CHANGE",
                         "LOCAL_REMOTE_CHANGE", "ALARM_CHANGE", "RF_STATE_CHANGE"};
  const char* severities[] = {"CRITICAL", "REDUCED_POWER", "MAINTENANCE",
                              "UNSPECIFIED_ALARM_SEVERITY"};
  Json::Value section;
  section["events"] = Json::arrayValue;
  for (int n = 1; n <= 30; ++n) {
    Json::Value event;
    event["eventLogId"] = n;
    event["seconds"] = 1000.0 + n;
    event["hundredths"] = n;
    event["eventType"] = types[n % 6];
    event["deviceName"] = "amplifier";
    event["deviceId"] = std::to_string(n % 4 + 1);
    event["description"] = "event " + std::string(n < 10 ? "0" : "") + std::to_string(n);
    event["severity"] = severities[n % 4];
    event["eventName"] = "name " + std::string(31 - n < 10 ? "0" : "") + std::to_string(31 - n);
    event["value"] = std::to_string(n % 3);
    section["events"].append(event);
  }
  return section;
}

class EventLogModelTest : public ::testing::Test {
 protected:
  EventLogModelTest() { ModelRegistry::install(*users.host, {makeEventLog}); }

  SimTavel& host() { return *users.host; }

  Resource command(const std::string& path, const Resource& request = Resource()) {
    ResourceAction action(CCRUD::Command, path, request, nullptr, "");
    return host().processInternalAction(action);
  }

  Resource getEvents(int page, int pageSize, const std::string& order = "time",
                     bool descending = true, int type = 0) {
    Resource request;
    request.addValue("displayOrder", ResourceValue(order));
    request.addValue("descending", ResourceValue(descending));
    request.addValue("page", ResourceValue(page));
    request.addValue("pageSize", ResourceValue(pageSize));
    request.addValue("eventType", ResourceValue(type));
    return command(EventLogModel::kGetEvents, request);
  }

  static std::vector<int> ids(const Resource& answer) {
    std::vector<int> ids;
    for (const ResourceValue& record : answer.values.at("value").getListValue()) {
      ids.push_back(record.getMapValue().at("eventLogId").getIntValue());
    }
    return ids;
  }

  void seedThirty() { host().applyFixture(fixtureWith(thirtyEvents())); }

  HostWithUsers users;
};

TEST_F(EventLogModelTest, DemoLogHoldsThreeThousandEventsOfTheLastThreeWeeks) {
  const Resource answer = getEvents(0, 15);
  ASSERT_EQ(answer.values.at("count").getIntValue(), EventLogModel::kDemoEvents);
  const auto& records = answer.values.at("value").getListValue();
  ASSERT_EQ(records.size(), static_cast<std::size_t>(EventLogModel::kDemoEvents));
  const double now =
      std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  const std::set<std::string> types = {"PRESET_CHANGE",       "POWER_CHANGE", "FREQUENCY_CHANGE",
                                       "LOCAL_REMOTE_CHANGE", "ALARM_CHANGE", "RF_STATE_CHANGE"};
  const std::set<std::string> severities = {"CRITICAL", "REDUCED_POWER", "MAINTENANCE",
                                            "UNSPECIFIED_ALARM_SEVERITY"};
  const std::set<std::string> devices = {"exciter1",   "exciter2",   "amplifier1",   "amplifier2",
                                         "amplifier3", "amplifier4", "powersupply1", "powersupply2",
                                         "fan1",       "fan2",       "fan3",         "fan4"};
  std::set<int> seenIds;
  std::set<std::string> seenTypes;
  for (const ResourceValue& value : records) {
    const auto& record = value.getMapValue();
    const double seconds = record.at("seconds").getDoubleValue();
    EXPECT_LE(seconds, now + 1);
    EXPECT_GE(seconds, now - EventLogModel::kDemoDays * 86400.0 - 1);
    EXPECT_GE(record.at("hundredths").getIntValue(), 0);
    EXPECT_LE(record.at("hundredths").getIntValue(), 99);
    EXPECT_TRUE(types.count(record.at("eventType").getStringValue()));
    EXPECT_TRUE(severities.count(record.at("severity").getStringValue()));
    EXPECT_TRUE(devices.count(record.at("deviceName").getStringValue() +
                              record.at("deviceId").getStringValue()));
    EXPECT_FALSE(record.at("description").getStringValue().empty());
    EXPECT_FALSE(record.at("eventName").getStringValue().empty());
    EXPECT_FALSE(record.at("value").getStringValue().empty());
    seenIds.insert(record.at("eventLogId").getIntValue());
    seenTypes.insert(record.at("eventType").getStringValue());
  }
  EXPECT_EQ(seenIds.size(), records.size());
  EXPECT_EQ(seenTypes, types);
}

TEST_F(EventLogModelTest, DemoLogIsNewestFirstByDefault) {
  const Resource answer = command(EventLogModel::kGetEvents);
  const auto& records = answer.values.at("value").getListValue();
  ASSERT_EQ(records.size(), static_cast<std::size_t>(EventLogModel::kDemoEvents));
  for (std::size_t i = 1; i < records.size(); ++i) {
    EXPECT_GE(records[i - 1].getMapValue().at("seconds").getDoubleValue(),
              records[i].getMapValue().at("seconds").getDoubleValue());
  }
}

TEST_F(EventLogModelTest, FixtureGivesExactlyItsEvents) {
  seedThirty();
  const Resource answer = getEvents(0, 15, "eventId", false);
  EXPECT_EQ(answer.values.at("count").getIntValue(), 30);
  std::vector<int> expected;
  for (int n = 1; n <= 30; ++n) expected.push_back(n);
  EXPECT_EQ(ids(answer), expected);
  const auto& first = answer.values.at("value").getListValue().front().getMapValue();
  EXPECT_EQ(first.at("seconds").getType(), tavelabi::ResourceValueType::DOUBLE);
  EXPECT_EQ(first.at("hundredths").getType(), tavelabi::ResourceValueType::INT32);
  EXPECT_EQ(first.at("deviceId").getStringValue(), "2");
  EXPECT_EQ(first.size(), 10U);
}

TEST_F(EventLogModelTest, FixtureWithNoEventsGivesAnEmptyLog) {
  host().applyFixture(fixtureWith(parseJson(R"({"events": []})")));
  const Resource answer = getEvents(1, 15);
  EXPECT_EQ(answer.values.at("count").getIntValue(), 0);
  EXPECT_TRUE(answer.values.at("value").getListValue().empty());
}

TEST_F(EventLogModelTest, PagesSliceTheOrderedLog) {
  seedThirty();
  const Resource first = getEvents(1, 15);
  EXPECT_EQ(first.values.at("count").getIntValue(), 30);
  std::vector<int> newest;
  for (int n = 30; n > 15; --n) newest.push_back(n);
  EXPECT_EQ(ids(first), newest);
  std::vector<int> oldest;
  for (int n = 15; n > 0; --n) oldest.push_back(n);
  EXPECT_EQ(ids(getEvents(2, 15)), oldest);
  EXPECT_TRUE(ids(getEvents(3, 15)).empty());
  EXPECT_EQ(getEvents(9, 15).values.at("count").getIntValue(), 30);
  EXPECT_EQ(ids(getEvents(4, 7)), (std::vector<int>{9, 8, 7, 6, 5, 4, 3}));
  EXPECT_EQ(ids(getEvents(5, 7)), (std::vector<int>{2, 1}));
}

TEST_F(EventLogModelTest, PageZeroIsTheWholeSelectionAndBadPagingIsEmpty) {
  seedThirty();
  EXPECT_EQ(ids(getEvents(0, 15)).size(), 30U);
  EXPECT_TRUE(ids(getEvents(-1, 15)).empty());
  EXPECT_TRUE(ids(getEvents(1, 0)).empty());
  EXPECT_TRUE(ids(getEvents(1, -15)).empty());
  EXPECT_TRUE(ids(getEvents(2147483647, 2147483647)).empty());
  EXPECT_EQ(getEvents(-1, 15).values.at("count").getIntValue(), 30);
}

TEST_F(EventLogModelTest, TypeFiltersAndCountsOnlyThatType) {
  seedThirty();
  // Type 5 (ALARM_CHANGE) is n % 6 == 4: 4, 10, 16, 22, 28.
  const Resource alarms = getEvents(1, 15, "eventId", false, 5);
  EXPECT_EQ(alarms.values.at("count").getIntValue(), 5);
  EXPECT_EQ(ids(alarms), (std::vector<int>{4, 10, 16, 22, 28}));
  EXPECT_EQ(getEvents(1, 15, "time", true, 7).values.at("count").getIntValue(), 0);
  EXPECT_EQ(getEvents(1, 15, "time", true, -3).values.at("count").getIntValue(), 0);
}

TEST_F(EventLogModelTest, EachFieldOrdersTheLogAndDescendingIsTheReverse) {
  seedThirty();
  for (const std::string field :
       {"device", "time", "name", "description", "alarmSeverity", "value", "type", "eventId"}) {
    std::vector<int> ascending = ids(getEvents(0, 15, field, false));
    std::vector<int> descending = ids(getEvents(0, 15, field, true));
    std::reverse(descending.begin(), descending.end());
    EXPECT_EQ(ascending, descending) << field;
  }
  // Names run the other way round from the ids.
  EXPECT_EQ(ids(getEvents(1, 3, "name", false)), (std::vector<int>{30, 29, 28}));
  EXPECT_EQ(ids(getEvents(1, 3, "description", false)), (std::vector<int>{1, 2, 3}));
  // Device ids 1 first (n % 4 == 0: 4, 8, ...), ties by id.
  EXPECT_EQ(ids(getEvents(1, 3, "device", false)), (std::vector<int>{4, 8, 12}));
  // CRITICAL (n % 4 == 0) sorts first.
  EXPECT_EQ(ids(getEvents(1, 2, "alarmSeverity", false)), (std::vector<int>{4, 8}));
  // PRESET_CHANGE (1) is n % 6 == 0.
  EXPECT_EQ(ids(getEvents(1, 2, "type", false)), (std::vector<int>{6, 12}));
  // Values "0" first: n % 3 == 0.
  EXPECT_EQ(ids(getEvents(1, 2, "value", false)), (std::vector<int>{3, 6}));
}

TEST_F(EventLogModelTest, UnknownOrderIsByTime) {
  seedThirty();
  EXPECT_EQ(ids(getEvents(0, 15, "colour", false)), ids(getEvents(0, 15, "time", false)));
}

TEST_F(EventLogModelTest, RequestOfTheWrongTypeIsRefused) {
  Resource request("page", ResourceValue("1"));
  EXPECT_THROW(command(EventLogModel::kGetEvents, request), std::invalid_argument);
  Resource order("displayOrder", ResourceValue(3));
  EXPECT_THROW(command(EventLogModel::kGetEvents, order), std::invalid_argument);
}

TEST_F(EventLogModelTest, DeleteClearsTheLog) {
  seedThirty();
  EXPECT_EQ(command(EventLogModel::kDeleteEvents).values.at("count").getIntValue(), 30);
  EXPECT_EQ(getEvents(1, 15).values.at("count").getIntValue(), 0);
}

TEST_F(EventLogModelTest, CsvFileHoldsTheSelectionInOrder) {
  const std::filesystem::path directory =
      std::filesystem::temp_directory_path() / ("eventlog-test-" + std::to_string(::getpid()));
  std::filesystem::remove_all(directory);
  Json::Value section = parseJson(R"({"events": [
      {"eventLogId": 1, "seconds": 1763856000, "hundredths": 5, "eventType": "POWER_CHANGE",
       "deviceName": "amplifier", "deviceId": "2", "eventName": "Power change",
       "severity": "UNSPECIFIED_ALARM_SEVERITY", "description": "Set to 1,000 W, \"high\"",
       "value": "1000 W"},
      {"eventLogId": 2, "seconds": 1763856060, "eventType": "RF_STATE_CHANGE",
       "description": "RF output switched on", "value": "ON"},
      {"eventLogId": 3, "seconds": 1763856120, "eventType": "POWER_CHANGE", "value": "500 W"}]})");
  section["csvDirectory"] = directory.string();
  host().applyFixture(fixtureWith(section));

  Resource request;
  request.addValue("displayOrder", ResourceValue("eventId"));
  request.addValue("descending", ResourceValue(true));
  request.addValue("eventType", ResourceValue(2));
  const Resource answer = command(EventLogModel::kGenerateCsv, request);
  EXPECT_EQ(answer.values.at("value").getStringValue(), (directory / "eventlog.csv").string());
  EXPECT_EQ(answer.values.at("count").getIntValue(), 2);

  std::ifstream file(directory / "eventlog.csv", std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(),
            "eventLogId,time,deviceName,deviceId,eventType,eventName,severity,description,value\r\n"
            "3,2025-11-23T00:02:00.00Z,,,POWER_CHANGE,,,,500 W\r\n"
            "1,2025-11-23T00:00:00.05Z,amplifier,2,POWER_CHANGE,Power change,"
            "UNSPECIFIED_ALARM_SEVERITY,\"Set to 1,000 W, \"\"high\"\"\",1000 W\r\n");
  EXPECT_FALSE(std::filesystem::exists(directory / "eventlog.csv.partial"));
  std::filesystem::remove_all(directory);
}

TEST_F(EventLogModelTest, CsvLeavesATimeOutsideTheCalendarEmpty) {
  const std::filesystem::path directory =
      std::filesystem::temp_directory_path() / ("eventlog-time-" + std::to_string(::getpid()));
  Json::Value section = parseJson(R"({"events": [{"eventLogId": 1, "seconds": 1e300},
                                                 {"eventLogId": 2, "seconds": -1e20}]})");
  section["csvDirectory"] = directory.string();
  host().applyFixture(fixtureWith(section));
  Resource request("displayOrder", ResourceValue("eventId"));
  request.addValue("descending", ResourceValue(false));
  command(EventLogModel::kGenerateCsv, request);
  std::ifstream file(directory / "eventlog.csv", std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(),
            "eventLogId,time,deviceName,deviceId,eventType,eventName,severity,description,value\r\n"
            "1,,,,,,,,\r\n2,,,,,,,,\r\n");
  std::filesystem::remove_all(directory);
}

TEST_F(EventLogModelTest, CsvIntoAPlaceThatIsNoDirectoryFails) {
  const std::filesystem::path blocker =
      std::filesystem::temp_directory_path() / ("eventlog-file-" + std::to_string(::getpid()));
  std::ofstream(blocker) << "a file";
  Json::Value section;
  section["csvDirectory"] = blocker.string();
  host().applyFixture(fixtureWith(section));
  EXPECT_ANY_THROW(command(EventLogModel::kGenerateCsv));
  std::filesystem::remove(blocker);
}

TEST_F(EventLogModelTest, NewEventsArriveWhileOnAndNotFromAFixturesLog) {
  seedThirty();
  host().tickModels(TimePoint(1s));
  host().tickModels(TimePoint(1000s));
  EXPECT_EQ(getEvents(0, 15).values.at("count").getIntValue(), 30);

  host().applyFixture(fixtureWith(parseJson(R"({"newEvents": true})")));
  host().tickModels(TimePoint(2000s));  // starts the wait
  host().tickModels(TimePoint(2000s + 91s));
  const Resource answer = getEvents(1, 1);
  EXPECT_EQ(answer.values.at("count").getIntValue(), 31);
  EXPECT_EQ(ids(answer), (std::vector<int>{31}));
}

TEST_F(EventLogModelTest, BadSectionsAreRefused) {
  for (const std::string text :
       {R"({"event": []})", R"({"events": {}})", R"({"events": [{"colour": "red"}]})",
        R"({"events": [{"seconds": "now"}]})", R"({"events": [{"eventLogId": 1.5}]})",
        R"({"events": [{"value": 3}]})", R"({"newEvents": "yes"})", R"({"csvDirectory": ""})",
        R"([])"}) {
    EXPECT_THROW(host().applyFixture(fixtureWith(parseJson(text))), std::invalid_argument) << text;
  }
}

TEST_F(EventLogModelTest, ViewerMayReadAndExportButNotClear) {
  Json::Value section;
  section["events"] = Json::arrayValue;
  section["csvDirectory"] =
      (std::filesystem::temp_directory_path() / ("eventlog-rights-" + std::to_string(::getpid())))
          .string();
  host().applyFixture(fixtureWith(section));
  EXPECT_NO_THROW(users.run(CCRUD::Command, EventLogModel::kGetEvents, users.viewerSession));
  EXPECT_NO_THROW(users.run(CCRUD::Command, EventLogModel::kGenerateCsv, users.viewerSession));
  EXPECT_THROW(users.run(CCRUD::Command, EventLogModel::kDeleteEvents, users.viewerSession),
               tavelabi::AuthorizationFailure);
  EXPECT_NO_THROW(users.run(CCRUD::Command, EventLogModel::kDeleteEvents, users.operatorSession));
  std::filesystem::remove_all(section["csvDirectory"].asString());
}

// ---- the fixture key "models" ----

TEST(EventLogModelSeedTest, FixtureNamesTheModelThatRunsWithTheDemosModelsOff) {
  SimTavel host(HostWithUsers::quietOptions());
  Fixture fixture = fixtureWith(parseJson(R"({"events": [{"eventLogId": 7}]})"));
  fixture.models = {"eventlog"};
  HostSeed::seed(host, {fixture}, false);
  EXPECT_EQ(host.modelNames(), std::vector<std::string>{"eventlog"});
  ResourceAction action(CCRUD::Command, EventLogModel::kGetEvents, nullptr, "");
  EXPECT_EQ(host.processInternalAction(action).values.at("count").getIntValue(), 1);
  EXPECT_TRUE(host.listPaths("/demo/**").empty());
}

TEST(EventLogModelSeedTest, WithoutModelsKeyNothingRuns) {
  SimTavel host(HostWithUsers::quietOptions());
  HostSeed::seed(host, {fixtureWith(parseJson(R"({"events": []})"))}, false);
  EXPECT_TRUE(host.modelNames().empty());
}

TEST(EventLogModelSeedTest, UnknownModelNameIsAnError) {
  SimTavel host(HostWithUsers::quietOptions());
  Fixture fixture;
  fixture.source = "x.json";
  fixture.models = {"eventlogs"};
  try {
    HostSeed::seed(host, {fixture}, false);
    FAIL() << "no error";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "x.json: unknown model \"eventlogs\"");
  }
}

}  // namespace
}  // namespace halvor::sim
