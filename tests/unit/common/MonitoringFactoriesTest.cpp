#include <google/protobuf/util/time_util.h>
#include <gtest/gtest.h>

#include <string>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/common/JsonOptions.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::protobuf {
namespace {

using HostValue = tavelabi::ResourceValue;
using kelo::JsonOptions;

tavelabi::Resource alarmResource() {
  tavelabi::Resource host("label", HostValue("Over temperature"));
  host.addValue("path", HostValue("/alarms/amplifier/3/overTemperature"));
  host.addValue("description", HostValue("PA 3 heat sink above 85 C"));
  host.addValue("severity", HostValue("REDUCED_POWER"));
  host.addValue("time", HostValue("2026-11-20T10:15:30Z"));
  return host;
}

TEST(MonitoringFactoriesTest, AnAlarmIsActiveByValueBeforeActive) {
  tavelabi::Resource host = alarmResource();
  host.addValue("value", HostValue(false));
  host.addValue("active", HostValue(true));
  const auto alarm = HalvorPbFactory2Alarm().build(&host);
  ASSERT_TRUE(alarm->has_active());
  EXPECT_FALSE(alarm->active().value());
}

TEST(MonitoringFactoriesTest, AnAlarmWithoutValueIsActiveByActive) {
  tavelabi::Resource host = alarmResource();
  host.addValue("active", HostValue(true));
  const auto alarm = HalvorPbFactory2Alarm().build(&host);
  ASSERT_TRUE(alarm->has_active());
  EXPECT_TRUE(alarm->active().value());
}

TEST(MonitoringFactoriesTest, AnAlarmIsNamedByItsLabelUnlessItHasAName) {
  tavelabi::Resource labelled = alarmResource();
  EXPECT_EQ(HalvorPbFactory2Alarm().build(&labelled)->name().value(), "Over temperature");
  tavelabi::Resource named = alarmResource();
  named.addValue("name", HostValue("PA3 temperature"));
  EXPECT_EQ(HalvorPbFactory2Alarm().build(&named)->name().value(), "PA3 temperature");
}

TEST(MonitoringFactoriesTest, AnAlarmTakesItsSeverityByNameAndItsTimeFromText) {
  tavelabi::Resource host = alarmResource();
  const auto alarm = HalvorPbFactory2Alarm().build(&host);
  EXPECT_EQ(alarm->severity(), REDUCED_POWER);
  EXPECT_EQ(google::protobuf::util::TimeUtil::ToString(alarm->time()), "2026-11-20T10:15:30Z");
  EXPECT_EQ(alarm->path().value(), "/alarms/amplifier/3/overTemperature");
  EXPECT_EQ(alarm->description().value(), "PA 3 heat sink above 85 C");
}

TEST(MonitoringFactoriesTest, AnUnknownSeverityIsCritical) {
  tavelabi::Resource host("severity", HostValue("SMOKE"));
  EXPECT_EQ(HalvorPbFactory2Alarm().build(&host)->severity(), CRITICAL);
}

TEST(MonitoringFactoriesTest, AnAlarmKeyAbsentFromTheResourceStaysAbsent) {
  tavelabi::Resource host("label", HostValue("Fan stopped"));
  const auto alarm = HalvorPbFactory2Alarm().build(&host);
  EXPECT_FALSE(alarm->has_active());
  EXPECT_FALSE(alarm->has_path());
  EXPECT_FALSE(alarm->has_time());
  EXPECT_EQ(JsonOptions::toJson(*alarm), R"({"name":"Fan stopped"})");
}

TEST(MonitoringFactoriesTest, AMeterKeepsTheTypeOfItsValueUnderTheKeyValue) {
  tavelabi::Resource host("value", HostValue(3));
  host.addValue("units", HostValue("W"));
  host.addValue("min", HostValue(0.0));
  host.addValue("max", HostValue(5000.0));
  host.addValue("digitsToDisplay", HostValue(1));
  const auto meter = HalvorPbFactory2Meter().build(&host);
  EXPECT_EQ(JsonOptions::toJson(*meter),
            R"({"value":{"values":{"value":{"intValue":3,"type":"INT32"}}},"units":"W",)"
            R"("min":0,"max":5000,"digitsToDisplay":1})");
}

TEST(MonitoringFactoriesTest, AnEventsTimeIsNotReadFromTheResourceButItsNamesAre) {
  tavelabi::Resource host("time", HostValue("2026-11-20T10:15:30Z"));
  host.addValue("eventType", HostValue("POWER_CHANGE"));
  host.addValue("severity", HostValue("MAINTENANCE"));
  host.addValue("eventLogId", HostValue(42));
  HalvorPbFactory2LoggedEvent factory;
  factory.overrides().mutable_time()->set_seconds(7);
  const auto event = factory.build(&host);
  EXPECT_EQ(event->time().seconds(), 7);
  EXPECT_EQ(event->eventtype(), LoggedEvent::POWER_CHANGE);
  EXPECT_EQ(event->severity(), MAINTENANCE);
  EXPECT_EQ(event->eventlogid().value(), 42);
}

TEST(MonitoringFactoriesTest, AnUnknownEventTypeIsUnspecified) {
  tavelabi::Resource host("eventType", HostValue("WEATHER_CHANGE"));
  EXPECT_EQ(HalvorPbFactory2LoggedEvent().build(&host)->eventtype(), LoggedEvent::UNSPECIFIED);
}

TEST(MonitoringFactoriesTest, TheNestedEnumerationsAnswerToTheirOwnNames) {
  EXPECT_EQ(AudioEnums::AudioProcessor_Name(AudioProcessor(AudioEnums::ORBAN_INSIDE)),
            "ORBAN_INSIDE");
  EXPECT_EQ(static_cast<int>(AudioInputSelect(AudioEnums::MPX_OVER_AES)), 6);
  EXPECT_EQ(static_cast<int>(AudioStereoMono(AudioEnums::STEREO)), 3);
  EXPECT_EQ(static_cast<int>(AudioInputType(AudioEnums::AUDIO_INPUT_TYPE_DIGITAL)), 1);
  EXPECT_EQ(LoggedEvent::EventType_Name(EventType(LoggedEvent::RF_STATE_CHANGE)),
            "RF_STATE_CHANGE");
}

}  // namespace
}  // namespace halvor::protobuf
