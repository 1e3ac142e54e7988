#include <gtest/gtest.h>
#include <prometheus/text_serializer.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "kelo/handlers/http/metrics/MetricsEndpointHelperClass.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/meters/MeterResources.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo {
namespace {

using Helper = MetricsEndpointHelperClass;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::MeterResources;

Resource meterOf(const std::string& path, const std::string& label, ResourceValue reading,
                 const std::string& units) {
  Resource meter{std::move(reading)};
  meter.values["path"] = ResourceValue(path);
  meter.values["label"] = ResourceValue(label);
  meter.values["units"] = ResourceValue(units);
  meter.values["deviceName"] = ResourceValue(std::string("amplifier"));
  meter.values["deviceId"] = ResourceValue(std::string("3"));
  return meter;
}

Resource alarmOf(const std::string& path, const std::string& label, const std::string& severity) {
  Resource alarm{ResourceValue(true)};
  alarm.values["path"] = ResourceValue(path);
  alarm.values["label"] = ResourceValue(label);
  alarm.values["deviceName"] = ResourceValue(std::string("fan"));
  alarm.values["deviceId"] = ResourceValue(std::string("2"));
  alarm.values["severity"] = ResourceValue(severity);
  return alarm;
}

class MetricsEndpointHelperClassTest : public ::testing::Test {
 protected:
  std::string text() { return prometheus::TextSerializer().Serialize(registry.Collect()); }
  bool holds(const std::string& line) {
    const std::string all = text();
    return all.find(line + "\n") != std::string::npos;
  }
  void seedMeterTree() {
    host.answer(
        "/resource/list",
        Resource{ResourceValue(std::vector<std::string>{"/meters/rf/list", "/meters/fans/list"})});
    host.answer("/meters/rf/list",
                MeterResources::listing({"/meters/rf/output"}, {{"label", "RF output"}}));
    host.answer("/meters/rf/output",
                MeterResources::listing({"/m/forward", "/m/rpm", "/m/on", "/m/mode", "/m/gone"},
                                        {{"label", "Transmitter output"}}));
    host.answer("/m/forward", meterOf("/m/forward", "Forward power", ResourceValue(5000.5), "W"));
    host.answer("/m/rpm", meterOf("/m/rpm", "Speed", ResourceValue(3200), "rpm"));
    host.answer("/m/on", meterOf("/m/on", "RF on", ResourceValue(true), ""));
    host.answer("/m/mode", meterOf("/m/mode", "Mode", ResourceValue(std::string("Normal")), ""));
    host.fail("/m/gone", [] { throw tavelabi::NonExistentResourcePathException("No resource"); });
    host.answer("/meters/fans/list", MeterResources::listing({}, {{"label", "Cooling"}}));
  }

  test::RecordingHost host;
  test::FakePluginInfo info;
  test::LogCapture log{info.getLoggerId()};
  web::HttpRequestPtr req = test::makeRequest(web::Get, "/metrics", "");
  prometheus::Registry registry;
};

TEST_F(MetricsEndpointHelperClassTest, MakesAGaugeOfEveryNumericAndBooleanMeter) {
  seedMeterTree();
  EXPECT_TRUE(Helper::addMeters(req, &host, &info, info.getSessionId(), registry));
  EXPECT_TRUE(holds(
      R"(kelo_meter_value{collection="RF output",device="amplifier3",group="Transmitter output",meter="Forward power",path="/m/forward",units="W"} 5000.5)"))
      << text();
  EXPECT_TRUE(holds(
      R"(kelo_meter_value{collection="RF output",device="amplifier3",group="Transmitter output",meter="Speed",path="/m/rpm",units="rpm"} 3200)"))
      << text();
  EXPECT_TRUE(holds(
      R"(kelo_meter_value{collection="RF output",device="amplifier3",group="Transmitter output",meter="RF on",path="/m/on",units=""} 1)"))
      << text();
  EXPECT_EQ(text().find("Mode"), std::string::npos);
  EXPECT_EQ(text().find("/m/gone"), std::string::npos);
}

TEST_F(MetricsEndpointHelperClassTest,
       ReadsTheTreeOnceUnderThePluginsSessionWithTheActivityBypass) {
  seedMeterTree();
  Helper::addMeters(req, &host, &info, info.getSessionId(), registry);
  std::vector<std::string> paths;
  for (const tavelabi::ResourceAction& action : host.actions()) {
    EXPECT_EQ(action.sessionId, test::FakePluginInfo::kSessionId) << action.path;
    if (action.path != "/resource/list") {
      EXPECT_EQ(MeterResources::flagOf(action), 1) << action.path;
    }
    paths.push_back(action.path);
  }
  EXPECT_EQ(paths, (std::vector<std::string>{"/resource/list", "/meters/rf/list",
                                             "/meters/rf/output", "/m/forward", "/m/rpm", "/m/on",
                                             "/m/mode", "/m/gone", "/meters/fans/list"}));
  EXPECT_EQ(host.actionsOn("/resource/list").at(0).resource.values.at("value").getStringValue(),
            "/meters/**/list");
}

TEST_F(MetricsEndpointHelperClassTest, ACollectionThatCannotBeReadIsLeftOutAndTheOthersStay) {
  seedMeterTree();
  host.fail("/meters/rf/list", [] { throw tavelabi::NonExistentResourcePathException("gone"); });
  host.answer("/meters/fans/list",
              MeterResources::listing({"/meters/fans/fan1"}, {{"label", "Cooling"}}));
  host.answer("/meters/fans/fan1", MeterResources::listing({"/m/rpm"}, {{"label", "Fan 1"}}));
  EXPECT_FALSE(Helper::addMeters(req, &host, &info, info.getSessionId(), registry));
  EXPECT_TRUE(holds(
      R"(kelo_meter_value{collection="Cooling",device="amplifier3",group="Fan 1",meter="Speed",path="/m/rpm",units="rpm"} 3200)"))
      << text();
  EXPECT_EQ(text().find("RF output"), std::string::npos);
  EXPECT_EQ(log.count(el::Level::Error, "Metrics: cannot read the meters of /meters/rf/list"), 1u);
}

TEST_F(MetricsEndpointHelperClassTest, HostTextGoesIntoLabelValuesEscaped) {
  host.answer("/resource/list",
              Resource{ResourceValue(std::vector<std::string>{"/meters/x/list"})});
  host.answer("/meters/x/list", MeterResources::listing({"/g"}, {{"label", "a \"b\" c"}}));
  host.answer("/g", MeterResources::listing({"/m"}, {{"label", "back\\slash"}}));
  host.answer("/m", meterOf("/m", "two\nlines", ResourceValue(1.5), "W"));
  EXPECT_TRUE(Helper::addMeters(req, &host, &info, info.getSessionId(), registry));
  EXPECT_TRUE(holds(
      R"(kelo_meter_value{collection="a \"b\" c",device="amplifier3",group="back\\slash",meter="two\nlines",path="/m",units="W"} 1.5)"))
      << text();
}

TEST_F(MetricsEndpointHelperClassTest, MakesOneSeriesPerActiveAlarmAndACountPerSeverity) {
  host.answer("/system/alarms/active",
              Resource{ResourceValue(std::vector<std::string>{"/alarms/a", "/alarms/b"})});
  host.answer("/alarms/a", alarmOf("/alarms/a", "Fan stalled", "CRITICAL"));
  host.answer("/alarms/b", alarmOf("/alarms/b", "Filter", "MAINTENANCE"));
  EXPECT_TRUE(Helper::addAlarms(req, &host, &info, info.getSessionId(), registry));
  EXPECT_TRUE(holds(
      R"(kelo_alarm_active{device="fan-2",name="Fan stalled",path="/alarms/a",severity="CRITICAL"} 1)"))
      << text();
  EXPECT_TRUE(holds(
      R"(kelo_alarm_active{device="fan-2",name="Filter",path="/alarms/b",severity="MAINTENANCE"} 1)"))
      << text();
  EXPECT_TRUE(holds(R"(kelo_active_alarms{severity="CRITICAL"} 1)"));
  EXPECT_TRUE(holds(R"(kelo_active_alarms{severity="REDUCED_POWER"} 0)"));
  EXPECT_TRUE(holds(R"(kelo_active_alarms{severity="MAINTENANCE"} 1)"));
  EXPECT_TRUE(holds(R"(kelo_active_alarms{severity="UNSPECIFIED_ALARM_SEVERITY"} 0)"));
  for (const tavelabi::ResourceAction& action : host.actions()) {
    EXPECT_EQ(action.sessionId, test::FakePluginInfo::kSessionId) << action.path;
  }
}

TEST_F(MetricsEndpointHelperClassTest, NoActiveAlarmGivesFourZeroCounts) {
  host.answer("/system/alarms/active", Resource{ResourceValue(std::vector<std::string>{})});
  EXPECT_TRUE(Helper::addAlarms(req, &host, &info, info.getSessionId(), registry));
  EXPECT_TRUE(holds(R"(kelo_active_alarms{severity="CRITICAL"} 0)"));
  EXPECT_EQ(text().find("kelo_alarm_active{"), std::string::npos);
}

TEST_F(MetricsEndpointHelperClassTest, AnAlarmThatWentAwayFailsTheAlarmsAndLeavesNoAlarmMetric) {
  host.answer("/system/alarms/active",
              Resource{ResourceValue(std::vector<std::string>{"/alarms/a", "/alarms/gone"})});
  host.answer("/alarms/a", alarmOf("/alarms/a", "Fan stalled", "CRITICAL"));
  host.fail("/alarms/gone", [] { throw tavelabi::NonExistentResourcePathException("gone"); });
  EXPECT_FALSE(Helper::addAlarms(req, &host, &info, info.getSessionId(), registry));
  EXPECT_EQ(text().find("alarm"), std::string::npos) << text();
  EXPECT_EQ(log.count(el::Level::Error, "Metrics: cannot read the active alarms"), 1u);
}

TEST_F(MetricsEndpointHelperClassTest, ThePluginStatusIsOneForTheCurrentCodeAndZeroForTheOthers) {
  Helper::addPluginState(
      &info, tavelabi::PluginStatus(tavelabi::PluginStatus::Initializing, "Initializing"),
      registry);
  EXPECT_TRUE(holds(R"(kelo_plugin_status{status="Initializing"} 1)"));
  for (const char* other :
       {"Ok", "Stopped", "RuntimeFailure", "ConfigurationFailure", "AuthenticationFailure"}) {
    EXPECT_TRUE(holds(std::string("kelo_plugin_status{status=\"") + other + "\"} 0")) << other;
  }
  EXPECT_TRUE(holds(R"(kelo_build_info{name="Kelo",version="0"} 1)"));
}

TEST_F(MetricsEndpointHelperClassTest, HttpConnectionsAreTheOpenOnesLessTheWebSockets) {
  Helper::addServerState(5, 2, {{"/system/alarms/active", 3}, {"/meters/rf/output/**", 1}},
                         registry);
  EXPECT_TRUE(holds("kelo_http_connections_open 3"));
  EXPECT_TRUE(holds("kelo_websocket_connections_open 2"));
  EXPECT_TRUE(holds(R"(kelo_websocket_clients{path="/system/alarms/active"} 3)"));
  EXPECT_TRUE(holds(R"(kelo_websocket_clients{path="/meters/rf/output/**"} 1)"));
}

TEST_F(MetricsEndpointHelperClassTest, MoreWebSocketsThanConnectionsReadInBetweenGivesNoNegative) {
  Helper::addServerState(1, 2, {}, registry);
  EXPECT_TRUE(holds("kelo_http_connections_open 0"));
}

TEST_F(MetricsEndpointHelperClassTest, SourceStateIsOneOrZero) {
  Helper::addSourceState("meters", true, registry);
  Helper::addSourceState("alarms", false, registry);
  EXPECT_TRUE(holds(R"(kelo_metrics_source_up{source="meters"} 1)"));
  EXPECT_TRUE(holds(R"(kelo_metrics_source_up{source="alarms"} 0)"));
}

TEST(MetricsEndpointHelperClassReadingTest, NumbersAsTheyAreBooleansAsOneOrZeroTextNotAtAll) {
  auto meterWith = [](ResourceValue value) {
    return *MeterEndpointHelperClass::convertMeterToHalvorPbMeter(Resource{std::move(value)});
  };
  EXPECT_EQ(Helper::readingOf(meterWith(ResourceValue(2.25))), 2.25);
  EXPECT_EQ(Helper::readingOf(meterWith(ResourceValue(1.5f))), 1.5);
  EXPECT_EQ(Helper::readingOf(meterWith(ResourceValue(-7))), -7.0);
  EXPECT_EQ(Helper::readingOf(meterWith(ResourceValue(false))), 0.0);
  EXPECT_FALSE(Helper::readingOf(meterWith(ResourceValue(std::string("x")))).has_value());
  EXPECT_FALSE(Helper::readingOf(protobuf::Meter()).has_value());
}

}  // namespace
}  // namespace halvor::kelo
