#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/handlers/ws/WsActiveAlarms.h"
#include "support/RecordingHost.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Paths = std::vector<std::string>;

constexpr const char* kActive = "/system/alarms/active";
constexpr const char* kStalled = "/test/alarms/fan/2/stalled";
constexpr const char* kHot = "/test/alarms/amplifier/1/overTemperature";
constexpr const char* kPll = "/test/alarms/exciter/1/pllUnlocked";

Resource alarm(const std::string& path, bool value, const std::string& deviceName,
               const std::string& deviceId) {
  Resource resource;
  resource.values["label"] = ResourceValue(path.substr(path.rfind('/') + 1));
  resource.values["path"] = ResourceValue(path);
  resource.values["value"] = ResourceValue(value);
  resource.values["deviceName"] = ResourceValue(deviceName);
  resource.values["deviceId"] = ResourceValue(deviceId);
  resource.values["severity"] = ResourceValue("MAINTENANCE");
  return resource;
}

protobuf::AlarmList listOfFrame(const std::string& frame) {
  protobuf::AlarmList list;
  if (!list.ParseFromString(frame)) throw std::runtime_error("not an AlarmList message");
  return list;
}

Paths pathsOf(const protobuf::AlarmList& list) {
  Paths paths;
  for (const protobuf::Alarm& alarm : list.alarms()) paths.push_back(alarm.path().value());
  return paths;
}

class WsActiveAlarmsTest : public ::testing::Test {
 protected:
  WsActiveAlarmsTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    unitHost.hostAction(CCRUD::Create, kStalled, alarm(kStalled, true, "fan", "2"));
    unitHost.hostAction(CCRUD::Create, kHot, alarm(kHot, true, "amplifier", "1"));
    unitHost.hostAction(CCRUD::Create, kPll, alarm(kPll, false, "exciter", "1"));
    setActive({kStalled, kHot});
  }

  void setActive(const Paths& paths) {
    unitHost.hostAction(CCRUD::Update, kActive, Resource(ResourceValue(paths)));
  }
  void connect() { endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn); }
  std::vector<Paths> sentLists() const {
    std::vector<Paths> lists;
    for (const FakeConnection::Frame& frame : conn->sent()) {
      EXPECT_EQ(frame.type, web::WebSocketMessageType::Binary);
      lists.push_back(pathsOf(listOfFrame(frame.data)));
    }
    return lists;
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsActiveAlarms endpoint;
  std::string session = unitHost.openSession("viewer");
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsActiveAlarmsTest, FirstMessageIsTheActiveListReadFromTheHost) {
  connect();
  ASSERT_EQ(conn->sent().size(), 1u);
  const protobuf::AlarmList list = listOfFrame(conn->sent()[0].data);
  EXPECT_EQ(pathsOf(list), (Paths{kStalled, kHot}));
  EXPECT_EQ(list.alarms(0).device().guid().value(), "fan-2");
  EXPECT_EQ(list.alarms(0).name().value(), "stalled");
  EXPECT_TRUE(list.alarms(1).active().value());
  EXPECT_EQ(list.alarms(1).severity(), protobuf::MAINTENANCE);
  EXPECT_EQ(unitHost.manager().getListeners().count(kActive), 1u);
}

TEST_F(WsActiveAlarmsTest, EveryChangeSendsTheWholeListNotADifference) {
  connect();
  setActive({kStalled, kHot, kPll});
  setActive({kPll});
  setActive({});
  const std::vector<Paths> expected = {{kStalled, kHot}, {kStalled, kHot, kPll}, {kPll}, {}};
  EXPECT_EQ(sentLists(), expected);
}

TEST_F(WsActiveAlarmsTest, EachPushReadsTheAlarmsAnew) {
  connect();
  // A change of the alarm alone is not subscribed; the next change of the list shows it.
  unitHost.hostAction(CCRUD::Update, kHot, Resource("value", ResourceValue(false)));
  EXPECT_EQ(conn->sent().size(), 1u);
  setActive({kHot});
  ASSERT_EQ(conn->sent().size(), 2u);
  const protobuf::AlarmList pushed = listOfFrame(conn->sent()[1].data);
  ASSERT_EQ(pushed.alarms_size(), 1);
  EXPECT_FALSE(pushed.alarms(0).active().value());
}

TEST_F(WsActiveAlarmsTest, APushIsMadeFromTheListItCarries) {
  // The stored list says two alarms; the pushed resource names one, and that one is answered.
  std::string message;
  Resource pushed(ResourceValue(Paths{kPll}));
  WsActiveAlarms::messageGenerator(upgradeRequest(), pushed, session, message, kActive);
  EXPECT_EQ(pathsOf(listOfFrame(message)), (Paths{kPll}));
  // The pushed resource is left as it came.
  EXPECT_EQ(pushed.values.at("value").getListValue().size(), 1u);
}

TEST_F(WsActiveAlarmsTest, AnEmptyResourceReadsTheStoredList) {
  std::string message;
  Resource empty;
  WsActiveAlarms::messageGenerator(upgradeRequest(), empty, session, message, kActive);
  EXPECT_EQ(pathsOf(listOfFrame(message)), (Paths{kStalled, kHot}));
  EXPECT_TRUE(empty.values.empty());
}

TEST_F(WsActiveAlarmsTest, AnEmptyActiveListIsAFrameWithoutAlarms) {
  setActive({});
  connect();
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_TRUE(conn->sent()[0].data.empty());
  EXPECT_EQ(listOfFrame(conn->sent()[0].data).alarms_size(), 0);
}

TEST_F(WsActiveAlarmsTest, ADeadSessionIsClosedWith1011BeforeAnyFrame) {
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=unknown"), conn);
  EXPECT_TRUE(conn->sent().empty());
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1011);
  EXPECT_EQ(conn->shutdownCalls()[0].reason, "Invalid session ID.");
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsActiveAlarmsTest, TheGeneratorRefusesADeadSession) {
  std::string message;
  Resource pushed(ResourceValue(Paths{kPll}));
  EXPECT_THROW(WsActiveAlarms::messageGenerator(upgradeRequest(), pushed, "dead", message, kActive),
               tavelabi::NonExistentSessionException);
  EXPECT_TRUE(message.empty());
}

TEST_F(WsActiveAlarmsTest, AVanishedAlarmLeavesTheFirstMessageUnsent) {
  setActive({kStalled, "/test/alarms/gone"});
  connect();
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Error sending initial message: "), 1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsActiveAlarmsTest, AnAlarmThatVanishesLaterLeavesOnlyThatChangeUnsent) {
  connect();
  setActive({"/test/alarms/gone"});
  setActive({kPll});
  const std::vector<Paths> expected = {{kStalled, kHot}, {kPll}};
  EXPECT_EQ(sentLists(), expected);
}

// The host's actions of one rendering, recorded by a host double put in the simulated host's place.
class WsActiveAlarmsReadsTest : public WsActiveAlarmsTest {
 protected:
  void SetUp() override {
    recording.answer(kActive, Resource(ResourceValue(Paths{kStalled})));
    recording.answer(kStalled, alarm(kStalled, true, "fan", "2"));
    recording.answer(kPll, alarm(kPll, false, "exciter", "1"));
    recording.otherwise(Resource(ResourceValue(Paths{})));
    interface().tavel = &recording;
  }
  void TearDown() override { interface().tavel = &unitHost.host(); }
  static WebKeloInterface& interface() { return *web::app().getPlugin<WebKeloInterface>(); }

  RecordingHost recording;
};

TEST_F(WsActiveAlarmsReadsTest, TheSessionCheckIsNotActivityThenTheListAndEachAlarmAreRead) {
  std::string message;
  Resource empty;
  WsActiveAlarms::messageGenerator(upgradeRequest(), empty, "client-2", message, kActive);
  const std::vector<tavelabi::ResourceAction> actions = recording.actions();
  ASSERT_EQ(actions.size(), 3u);
  const tavelabi::ResourceAction& check = actions[0];
  EXPECT_EQ(check.action, CCRUD::Read);
  EXPECT_EQ(check.path, kActive);
  EXPECT_TRUE(check.resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
  const tavelabi::ResourceAction& list = actions[1];
  EXPECT_EQ(list.path, kActive);
  EXPECT_TRUE(list.resource.values.empty());
  EXPECT_EQ(actions[2].path, kStalled);
  for (const tavelabi::ResourceAction& action : actions) {
    EXPECT_EQ(action.sessionId, "client-2");
  }
}

TEST_F(WsActiveAlarmsReadsTest, APushReadsOnlyTheSessionCheckAndItsAlarms) {
  std::string message;
  Resource pushed(ResourceValue(Paths{kPll, kStalled}));
  WsActiveAlarms::messageGenerator(upgradeRequest(), pushed, "client-2", message, kActive);
  const std::vector<tavelabi::ResourceAction> actions = recording.actions();
  ASSERT_EQ(actions.size(), 3u);
  EXPECT_EQ(actions[0].path, kActive);
  EXPECT_TRUE(actions[0].resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
  EXPECT_EQ(actions[1].path, kPll);
  EXPECT_EQ(actions[2].path, kStalled);
  EXPECT_EQ(pathsOf(listOfFrame(message)), (Paths{kPll, kStalled}));
}

}  // namespace
}  // namespace halvor::kelo::test
