#include <google/protobuf/timestamp.pb.h>
#include <google/protobuf/util/time_util.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/FixtureLoader.h"
#include "sim/models/AlarmModel.h"
#include "sim/models/DeviceModel.h"
#include "sim/models/ModelRegistry.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::HostWithUsers;
using kelo::test::RecordingListener;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;
using Texts = std::vector<std::string>;

constexpr const char* kActive = AlarmModel::kActivePath;

std::unique_ptr<Model> makeAlarms() { return std::make_unique<AlarmModel>(); }

Texts textsAt(const SimTavel& host, const std::string& path) {
  Texts texts;
  const Resource stored = host.peek(path).value();
  for (const ResourceValue& element : stored.values.at("value").getListValue()) {
    texts.push_back(element.getStringValue());
  }
  return texts;
}

bool valueAt(const SimTavel& host, const std::string& path) {
  return host.peek(path).value().values.at("value").getBoolValue();
}

// The paths whose "value" is true, in the order of the lists.
Texts activeByValue(const SimTavel& host) {
  Texts active;
  for (const std::string& path : AlarmModel::alarmPaths()) {
    if (valueAt(host, path)) active.push_back(path);
  }
  return active;
}

Texts sorted(Texts texts) {
  std::sort(texts.begin(), texts.end());
  return texts;
}

Fixture sectionFixture(const std::string& json) {
  return FixtureLoader::parse(R"({"alarms": )" + json + "}", "test.json");
}

class AlarmModelTest : public ::testing::Test {
 protected:
  void install() { ModelRegistry::install(host, {makeAlarms}); }
  void apply(const std::string& json) { host.applyFixture(sectionFixture(json)); }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(AlarmModelTest, EachDeviceNameHasAListOfItsDevicesAlarms) {
  install();
  EXPECT_EQ(host.listPaths("/alarms/**/list"),
            (Texts{"/alarms/amplifier/list", "/alarms/exciter/list", "/alarms/fan/list",
                   "/alarms/powersupply/list"}));
  EXPECT_EQ(textsAt(host, "/alarms/exciter/list"),
            (Texts{"/alarms/exciter/1/pllUnlocked", "/alarms/exciter/1/inputLost",
                   "/alarms/exciter/2/pllUnlocked", "/alarms/exciter/2/inputLost"}));
  EXPECT_EQ(textsAt(host, "/alarms/fan/list").size(), 8u);
  EXPECT_EQ(AlarmModel::alarmPaths().size(), 24u);
}

TEST_F(AlarmModelTest, EveryAlarmHasItsKeysAndNamesADemoDevice) {
  install();
  const std::set<std::string> severities = {"CRITICAL", "REDUCED_POWER", "MAINTENANCE",
                                            "UNSPECIFIED_ALARM_SEVERITY"};
  std::set<std::string> seen;
  for (const std::string& path : AlarmModel::alarmPaths()) {
    const Resource alarm = host.peek(path).value();
    EXPECT_EQ(alarm.values.at("path").getStringValue(), path);
    EXPECT_FALSE(alarm.values.at("label").getStringValue().empty()) << path;
    EXPECT_FALSE(alarm.values.at("description").getStringValue().empty()) << path;
    EXPECT_EQ(alarm.values.at("value").getType(), tavelabi::ResourceValueType::BOOL) << path;
    const std::string name = alarm.values.at("deviceName").getStringValue();
    const std::string id = alarm.values.at("deviceId").getStringValue();
    EXPECT_EQ(path.rfind("/alarms/" + name + "/" + id + "/", 0), 0u) << path;
    const auto& devices = DeviceModel::devices();
    const auto device = std::find_if(devices.begin(), devices.end(),
                                     [&](const DemoDevice& d) { return d.name == name; });
    ASSERT_NE(device, devices.end()) << path;
    EXPECT_NE(std::find(device->ids.begin(), device->ids.end(), id), device->ids.end()) << path;
    const std::string severity = alarm.values.at("severity").getStringValue();
    EXPECT_EQ(severities.count(severity), 1u) << severity;
    seen.insert(severity);
    google::protobuf::Timestamp time;
    EXPECT_TRUE(google::protobuf::util::TimeUtil::FromString(
        alarm.values.at("time").getStringValue(), &time))
        << path;
  }
  EXPECT_EQ(seen, severities);
}

TEST_F(AlarmModelTest, TheActiveListHoldsTheAlarmsThatAreOnAtStart) {
  install();
  EXPECT_EQ(textsAt(host, kActive),
            (Texts{"/alarms/amplifier/2/overTemperature", "/alarms/fan/2/stalled"}));
  EXPECT_EQ(textsAt(host, kActive), activeByValue(host));
}

TEST_F(AlarmModelTest, OneAlarmComesOrGoesEachPeriodAsUpdatesThatListenersGet) {
  install();
  RecordingListener listener("/system/alarms/active", {CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(15s));
  EXPECT_EQ(textsAt(host, kActive).size(), 2u);

  host.tickModels(TimePoint(16s));
  const std::string first = AlarmModel::movingAlarms()[0];
  EXPECT_TRUE(valueAt(host, first));
  EXPECT_EQ(textsAt(host, kActive).back(), first);
  EXPECT_EQ(sorted(textsAt(host, kActive)), sorted(activeByValue(host)));

  host.tickModels(TimePoint(22s));
  const std::string second = AlarmModel::movingAlarms()[1];
  EXPECT_TRUE(valueAt(host, second));
  EXPECT_EQ(textsAt(host, kActive).size(), 4u);

  host.waitForListeners();
  const auto calls = listener.calls();
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[1].resource.values.at("value").getListValue().size(), 4u);
  host.removeResourceListener(nullptr, &listener);
}

TEST_F(AlarmModelTest, AnAlarmThatCameGoesAgainAtItsNextTurn) {
  install();
  const Texts atStart = textsAt(host, kActive);
  const std::size_t turns = AlarmModel::movingAlarms().size();
  host.tickModels(TimePoint(0s));
  for (std::size_t i = 1; i <= 2 * turns; ++i) host.tickModels(TimePoint(i * 6s));
  EXPECT_EQ(textsAt(host, kActive), atStart);
  EXPECT_FALSE(valueAt(host, AlarmModel::movingAlarms()[0]));
}

TEST_F(AlarmModelTest, AChangeStampsTheAlarmsTime) {
  install();
  const std::string path = AlarmModel::movingAlarms()[0];
  tavelabi::ResourceAction stamp(
      CCRUD::Update, path, Resource("time", ResourceValue("2000-01-01T00:00:00Z")), nullptr, "");
  host.processInternalAction(stamp);
  host.tickModels(TimePoint(0s));
  host.tickModels(TimePoint(6s));
  EXPECT_NE(host.peek(path).value().values.at("time").getStringValue(), "2000-01-01T00:00:00Z");
}

TEST_F(AlarmModelTest, AMovingAlarmThatWasRemovedIsPassedOver) {
  install();
  tavelabi::ResourceAction remove(CCRUD::Delete, AlarmModel::movingAlarms()[0], nullptr, "");
  host.processInternalAction(remove);
  host.tickModels(TimePoint(0s));
  host.tickModels(TimePoint(6s));
  EXPECT_FALSE(host.peek(AlarmModel::movingAlarms()[0]).has_value());
  EXPECT_TRUE(valueAt(host, AlarmModel::movingAlarms()[1]));
}

TEST_F(AlarmModelTest, AnActiveListAClientChangedIsKeptAndAddedTo) {
  install();
  tavelabi::ResourceAction set(CCRUD::Update, kActive, Resource(ResourceValue(Texts{"/x"})),
                               nullptr, "");
  host.processInternalAction(set);
  host.tickModels(TimePoint(0s));
  host.tickModels(TimePoint(6s));
  EXPECT_EQ(textsAt(host, kActive), (Texts{"/x", AlarmModel::movingAlarms()[0]}));
}

TEST_F(AlarmModelTest, WithoutMovingNothingChanges) {
  install();
  apply(R"({"moving": false})");
  const Texts atStart = textsAt(host, kActive);
  for (int i = 0; i < 10; ++i) host.tickModels(TimePoint(i * 60s));
  EXPECT_EQ(textsAt(host, kActive), atStart);
  EXPECT_EQ(activeByValue(host), atStart);
}

TEST_F(AlarmModelTest, ThePeriodIsSetInSeconds) {
  install();
  apply(R"({"periodSeconds": 1})");
  host.tickModels(TimePoint(0s));
  host.tickModels(TimePoint(999ms));
  EXPECT_EQ(textsAt(host, kActive).size(), 2u);
  host.tickModels(TimePoint(1s));
  EXPECT_EQ(textsAt(host, kActive).size(), 3u);
}

TEST_F(AlarmModelTest, TheFixturesActiveListIsSetAndTheValuesAgreeInEitherOrder) {
  const Texts wanted{"/alarms/fan/4/lowSpeed", "/alarms/exciter/1/pllUnlocked", "/elsewhere"};
  for (bool fixtureFirst : {true, false}) {
    SimTavel fresh(HostWithUsers::quietOptions());
    const Fixture fixture = sectionFixture(
        R"({"active": ["/alarms/fan/4/lowSpeed", "/alarms/exciter/1/pllUnlocked", "/elsewhere"]})");
    if (fixtureFirst) fresh.applyFixture(fixture);
    ModelRegistry::install(fresh, {makeAlarms});
    if (!fixtureFirst) fresh.applyFixture(fixture);
    EXPECT_EQ(textsAt(fresh, kActive), wanted) << fixtureFirst;
    EXPECT_EQ(activeByValue(fresh),
              (Texts{"/alarms/exciter/1/pllUnlocked", "/alarms/fan/4/lowSpeed"}))
        << fixtureFirst;
  }
}

TEST_F(AlarmModelTest, AnEmptyActiveListTurnsEveryAlarmOff) {
  install();
  apply(R"({"active": []})");
  EXPECT_TRUE(textsAt(host, kActive).empty());
  EXPECT_TRUE(activeByValue(host).empty());
}

TEST_F(AlarmModelTest, AVanishedAlarmStaysListedWithoutAResourceInEitherOrder) {
  const std::string gone = "/alarms/fan/1/stalled";
  for (bool fixtureFirst : {true, false}) {
    SimTavel fresh(HostWithUsers::quietOptions());
    const Fixture fixture = sectionFixture(R"({"vanished": ["/alarms/fan/1/stalled"]})");
    if (fixtureFirst) fresh.applyFixture(fixture);
    ModelRegistry::install(fresh, {makeAlarms});
    if (!fixtureFirst) fresh.applyFixture(fixture);
    const Texts listed = textsAt(fresh, "/alarms/fan/list");
    EXPECT_EQ(std::count(listed.begin(), listed.end(), gone), 1) << fixtureFirst;
    EXPECT_FALSE(fresh.peek(gone).has_value()) << fixtureFirst;
    EXPECT_TRUE(fresh.peek("/alarms/fan/1/lowSpeed").has_value());
  }
}

TEST_F(AlarmModelTest, AVanishedPathThatWasNotListedIsAddedToItsNamesList) {
  install();
  apply(R"({"vanished": ["/alarms/fan/9/ghost", "/alarms/radio/1/ghost"]})");
  EXPECT_EQ(textsAt(host, "/alarms/fan/list").back(), "/alarms/fan/9/ghost");
  EXPECT_EQ(textsAt(host, "/alarms/radio/list"), (Texts{"/alarms/radio/1/ghost"}));
  EXPECT_FALSE(host.peek("/alarms/fan/9/ghost").has_value());
}

TEST_F(AlarmModelTest, ASectionOfAnotherFormIsRefused) {
  install();
  for (const std::string json :
       {R"([])", R"({"actives": []})", R"({"active": "/alarms/x"})", R"({"active": [1]})",
        R"({"vanished": ["/elsewhere/x"]})", R"({"vanished": ["/alarms/"]})", R"({"moving": "no"})",
        R"({"periodSeconds": 0})", R"({"periodSeconds": 1.5})"}) {
    EXPECT_THROW(apply(json), std::invalid_argument) << json;
  }
}

TEST_F(AlarmModelTest, AFixturesResourcesWinOverTheSeed) {
  Fixture fixture;
  fixture.resources.emplace_back(kActive, Resource(ResourceValue(Texts{})));
  fixture.resources.emplace_back("/alarms/fan/2/stalled", Resource("label", ResourceValue("x")));
  host.applyFixture(fixture);
  install();
  EXPECT_TRUE(textsAt(host, kActive).empty());
  EXPECT_EQ(host.peek("/alarms/fan/2/stalled").value().values.size(), 1u);
}

TEST_F(AlarmModelTest, AHostWithoutModelsHasNoAlarmsNorDevices) {
  host.tickModels(TimePoint(60s));
  EXPECT_TRUE(host.listPaths("/alarms/**").empty());
  EXPECT_TRUE(host.listPaths("/device/**").empty());
  EXPECT_FALSE(host.peek(kActive).has_value());
}

TEST_F(AlarmModelTest, TheFixtureLoaderTakesTheAlarmsSection) {
  const Fixture fixture = FixtureLoader::parse(R"({"alarms": {"moving": false}})", "alarms.json");
  ASSERT_EQ(fixture.sections.size(), 1u);
  EXPECT_EQ(fixture.sections[0].first, "alarms");
}

}  // namespace
}  // namespace halvor::sim
