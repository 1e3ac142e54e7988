#include <google/protobuf/util/time_util.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "halvor/factories/FactoryCore.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/alarms/AlarmTestResources.h"

namespace halvor::kelo {
namespace {

using protobuf::Alarm;
using protobuf::AlarmList;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::fullAlarm;
using test::listOf;

constexpr const char* kPath = "/alarms/amplifier/3/overTemperature";

class AlarmEndpointHelperClassTest : public ::testing::Test {
 protected:
  std::shared_ptr<Alarm> alarmOf(const Resource& resource, const std::string& sessionId = "s1") {
    host.answer(kPath, resource);
    return AlarmEndpointHelperClass::getCurrentAlarmInfo(req, &host, &info, sessionId, kPath);
  }
  std::shared_ptr<AlarmList> listFrom(const Resource& resource,
                                      const std::string& sessionId = "s1") {
    return AlarmEndpointHelperClass::generateAlarmList(req, &host, &info, sessionId, resource);
  }

  test::RecordingHost host;
  test::FakePluginInfo info;
  web::HttpRequestPtr req = test::makeRequest(web::Get, "/1/api/alarms/alarm", "");
};

// ---- getCurrentAlarmInfo ----

TEST_F(AlarmEndpointHelperClassTest, ReadsTheAlarmOnceUnderTheGivenSession) {
  alarmOf(fullAlarm(kPath, true), "client-3");
  const tavelabi::ResourceAction& read = host.onlyAction();
  EXPECT_EQ(read.action, CCRUD::Read);
  EXPECT_EQ(read.path, kPath);
  EXPECT_EQ(read.sessionId, "client-3");
  EXPECT_EQ(read.pluginInfo, &info);
  EXPECT_TRUE(read.resource.values.empty());
}

TEST_F(AlarmEndpointHelperClassTest, EveryKeyGoesToItsField) {
  const std::shared_ptr<Alarm> alarm = alarmOf(fullAlarm(kPath, true));
  EXPECT_EQ(alarm->path().value(), kPath);
  EXPECT_TRUE(alarm->has_active());
  EXPECT_TRUE(alarm->active().value());
  EXPECT_EQ(alarm->description().value(), "Heat sink above 80 C");
  EXPECT_EQ(alarm->name().value(), "Over temperature");
  EXPECT_EQ(google::protobuf::util::TimeUtil::ToString(alarm->time()), "2026-01-31T12:34:56Z");
  EXPECT_EQ(alarm->device().guid().value(), "amplifier-3");
  EXPECT_EQ(alarm->device().name().value(), "amplifier");
  EXPECT_EQ(alarm->severity(), protobuf::REDUCED_POWER);
  EXPECT_EQ(alarm->meters_size(), 0);
  EXPECT_EQ(JsonOptions::toJson(*alarm),
            R"({"path":"/alarms/amplifier/3/overTemperature","active":true,)"
            R"("description":"Heat sink above 80 C","name":"Over temperature",)"
            R"("time":"2026-01-31T12:34:56Z","device":{"guid":"amplifier-3","name":"amplifier"},)"
            R"("severity":"REDUCED_POWER"})");
}

TEST_F(AlarmEndpointHelperClassTest, ValueFalseWinsOverActiveTrue) {
  Resource resource = fullAlarm(kPath, false);
  resource.values["active"] = ResourceValue(true);
  const std::shared_ptr<Alarm> alarm = alarmOf(resource);
  EXPECT_TRUE(alarm->has_active());
  EXPECT_FALSE(alarm->active().value());
}

TEST_F(AlarmEndpointHelperClassTest, ActiveIsReadOnlyWithoutValue) {
  Resource resource;
  resource.values["active"] = ResourceValue(true);
  EXPECT_TRUE(alarmOf(resource)->active().value());
  resource.values["active"] = ResourceValue(false);
  const std::shared_ptr<Alarm> inactive = alarmOf(resource);
  EXPECT_TRUE(inactive->has_active());
  EXPECT_FALSE(inactive->active().value());
}

TEST_F(AlarmEndpointHelperClassTest, NameOverridesLabel) {
  Resource resource = fullAlarm(kPath, true);
  resource.values["name"] = ResourceValue("PA 3 hot");
  EXPECT_EQ(alarmOf(resource)->name().value(), "PA 3 hot");
}

TEST_F(AlarmEndpointHelperClassTest, LabelAloneGivesTheName) {
  Resource resource;
  resource.values["label"] = ResourceValue("Fan stalled");
  EXPECT_EQ(alarmOf(resource)->name().value(), "Fan stalled");
}

TEST_F(AlarmEndpointHelperClassTest, UnknownSeverityIsCriticalWithoutError) {
  Resource resource = fullAlarm(kPath, true);
  resource.values["severity"] = ResourceValue("SEVERE_WEATHER");
  std::shared_ptr<Alarm> alarm;
  ASSERT_NO_THROW(alarm = alarmOf(resource));
  EXPECT_EQ(alarm->severity(), protobuf::CRITICAL);
  EXPECT_EQ(static_cast<int>(alarm->severity()), 0);
}

TEST_F(AlarmEndpointHelperClassTest, EveryKnownSeverityNameIsParsed) {
  const std::vector<std::pair<std::string, protobuf::AlarmSeverity>> names = {
      {"CRITICAL", protobuf::CRITICAL},
      {"REDUCED_POWER", protobuf::REDUCED_POWER},
      {"MAINTENANCE", protobuf::MAINTENANCE},
      {"UNSPECIFIED_ALARM_SEVERITY", protobuf::UNSPECIFIED_ALARM_SEVERITY}};
  for (const auto& [name, severity] : names) {
    Resource resource;
    resource.values["severity"] = ResourceValue(name);
    EXPECT_EQ(alarmOf(resource)->severity(), severity) << name;
  }
}

TEST_F(AlarmEndpointHelperClassTest, WithoutDeviceIdTheDeviceHasOnlyAName) {
  Resource resource = fullAlarm(kPath, true);
  resource.values.erase("deviceId");
  const std::shared_ptr<Alarm> alarm = alarmOf(resource);
  EXPECT_EQ(alarm->device().name().value(), "amplifier");
  EXPECT_FALSE(alarm->device().has_guid());
}

TEST_F(AlarmEndpointHelperClassTest, WithNeitherDeviceKeyTheDeviceIsPresentAndEmpty) {
  Resource resource = fullAlarm(kPath, true);
  resource.values.erase("deviceId");
  resource.values.erase("deviceName");
  const std::shared_ptr<Alarm> alarm = alarmOf(resource);
  EXPECT_TRUE(alarm->has_device());
  EXPECT_FALSE(alarm->device().has_name());
  EXPECT_FALSE(alarm->device().has_guid());
  EXPECT_NE(JsonOptions::toJson(*alarm).find(R"("device":{})"), std::string::npos);
}

TEST_F(AlarmEndpointHelperClassTest, DeviceIdWithoutDeviceNameFailsWithMapAt) {
  Resource resource = fullAlarm(kPath, true);
  resource.values.erase("deviceName");
  try {
    alarmOf(resource);
    ADD_FAILURE() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(AlarmEndpointHelperClassTest, AnAlarmWithoutKeysHasOnlyItsEmptyDevice) {
  const std::shared_ptr<Alarm> alarm = alarmOf(Resource());
  EXPECT_FALSE(alarm->has_path());
  EXPECT_FALSE(alarm->has_active());
  EXPECT_FALSE(alarm->has_description());
  EXPECT_FALSE(alarm->has_name());
  EXPECT_FALSE(alarm->has_time());
  EXPECT_EQ(JsonOptions::toJson(*alarm), R"({"device":{}})");
  EXPECT_EQ(JsonOptions::toJsonWithPrimitives(*alarm),
            R"({"meters":[],"device":{},"severity":"CRITICAL"})");
}

TEST_F(AlarmEndpointHelperClassTest, EmptyTextAndFalseStayPresent) {
  Resource resource;
  resource.values["description"] = ResourceValue("");
  resource.values["value"] = ResourceValue(false);
  EXPECT_EQ(JsonOptions::toJson(*alarmOf(resource)),
            R"({"active":false,"description":"","device":{}})");
}

TEST_F(AlarmEndpointHelperClassTest, TheAlarmsOwnPathKeyIsAnsweredNotTheReadPath) {
  Resource resource;
  resource.values["path"] = ResourceValue("/alarms/elsewhere");
  EXPECT_EQ(alarmOf(resource)->path().value(), "/alarms/elsewhere");
}

TEST_F(AlarmEndpointHelperClassTest, ATimeThatIsNotRfc3339FailsTheCall) {
  Resource resource;
  resource.values["time"] = ResourceValue("yesterday");
  EXPECT_THROW(alarmOf(resource), protobuf::ResourceValueMismatch);
}

TEST_F(AlarmEndpointHelperClassTest, HostFailurePassesThrough) {
  host.fail(kPath, [] { throw tavelabi::AuthorizationFailure("User viewer may not Read x"); });
  EXPECT_THROW(AlarmEndpointHelperClass::getCurrentAlarmInfo(req, &host, &info, "s1", kPath),
               tavelabi::AuthorizationFailure);
}

// ---- generateAlarmList ----

TEST_F(AlarmEndpointHelperClassTest, AnEmptyResourceReadsTheActiveListThenEachAlarmInOrder) {
  host.answer("/system/alarms/active", listOf({"/alarms/b", "/alarms/a"}));
  host.answer("/alarms/a", fullAlarm("/alarms/a", true));
  host.answer("/alarms/b", fullAlarm("/alarms/b", false));
  const std::shared_ptr<AlarmList> list = listFrom(Resource(), "client-9");

  const std::vector<tavelabi::ResourceAction> actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  EXPECT_EQ(actions[0].path, "/system/alarms/active");
  EXPECT_EQ(actions[1].path, "/alarms/b");
  EXPECT_EQ(actions[2].path, "/alarms/a");
  for (const auto& action : actions) {
    EXPECT_EQ(action.action, CCRUD::Read);
    EXPECT_EQ(action.sessionId, "client-9");
  }
  ASSERT_EQ(list->alarms_size(), 2);
  EXPECT_EQ(list->alarms(0).path().value(), "/alarms/b");
  EXPECT_FALSE(list->alarms(0).active().value());
  EXPECT_EQ(list->alarms(1).path().value(), "/alarms/a");
}

TEST_F(AlarmEndpointHelperClassTest, AResourceWithAListIsTakenWithoutReadingTheActiveList) {
  host.answer("/alarms/a", fullAlarm("/alarms/a", true));
  const std::shared_ptr<AlarmList> list = listFrom(listOf({"/alarms/a", "/alarms/a"}));
  const std::vector<tavelabi::ResourceAction> actions = host.actions();
  ASSERT_EQ(actions.size(), 2u);
  EXPECT_EQ(actions[0].path, "/alarms/a");
  EXPECT_EQ(actions[1].path, "/alarms/a");
  EXPECT_EQ(list->alarms_size(), 2);
}

TEST_F(AlarmEndpointHelperClassTest, OtherKeysOfAResourceWithoutValueStillReadTheActiveList) {
  host.answer("/system/alarms/active", listOf({}));
  const std::shared_ptr<AlarmList> list = listFrom(Resource("list", ResourceValue(3)));
  EXPECT_EQ(host.onlyAction().path, "/system/alarms/active");
  EXPECT_EQ(list->alarms_size(), 0);
}

TEST_F(AlarmEndpointHelperClassTest, AnEmptyListGivesNoEntries) {
  const std::shared_ptr<AlarmList> list = listFrom(listOf({}));
  EXPECT_TRUE(host.actions().empty());
  EXPECT_EQ(list->alarms_size(), 0);
  EXPECT_EQ(JsonOptions::toJsonWithPrimitives(*list), R"({"alarms":[]})");
}

TEST_F(AlarmEndpointHelperClassTest, AnActiveListWithoutValueFailsWithMapAt) {
  host.answer("/system/alarms/active", Resource("other", ResourceValue(1)));
  try {
    listFrom(Resource());
    ADD_FAILURE() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(AlarmEndpointHelperClassTest, AnAlarmThatVanishedFailsTheWholeList) {
  host.answer("/alarms/a", fullAlarm("/alarms/a", true));
  host.fail("/alarms/gone", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /alarms/gone");
  });
  EXPECT_THROW(listFrom(listOf({"/alarms/a", "/alarms/gone", "/alarms/a"})),
               tavelabi::NonExistentResourcePathException);
  // The walk ends at the failure.
  EXPECT_EQ(host.actions().size(), 2u);
}

}  // namespace
}  // namespace halvor::kelo
