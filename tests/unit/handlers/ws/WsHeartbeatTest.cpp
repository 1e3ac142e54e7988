#include <gtest/gtest.h>

#include <memory>

#include "kelo/handlers/ws/WsHeartbeat.h"
#include "kelo/handlers/ws/WsResource.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;

class WsHeartbeatTest : public ::testing::Test {
 protected:
  int countOf(const std::string& ip) { return unitHost.connectivities().at(ip).getIntValue(); }
  void tick() { unitHost.plugin().checkHeartbeat(); }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsHeartbeat heartbeat;
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>("10.0.0.7", 5000);
};

TEST_F(WsHeartbeatTest, ConnectWritesTheCountLogsInColourAndAnswersPong) {
  heartbeat.handleNewConnection(upgradeRequest("SessionID=whatever"), conn);
  EXPECT_EQ(countOf("10.0.0.7"), WsHeartbeat::kHeartbeatCount);
  EXPECT_EQ(countOf("10.0.0.7"), 5);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].data, "pong");
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Text);
  const std::string expected =
      TermTint::bright_color(36) + "start heartbeat with 10.0.0.7" + TermTint::color(0);
  EXPECT_EQ(log.count(el::Level::Info, expected), 1u);
  EXPECT_EQ(
      log.count(el::Level::Debug, "received ping from client 10.0.0.7 extend heartbeat count"), 1u);
}

TEST_F(WsHeartbeatTest, WrongSessionIsNotRefusedAtConnect) {
  heartbeat.handleNewConnection(upgradeRequest("", "SessionID=not-a-session"), conn);
  EXPECT_TRUE(conn->shutdownCalls().empty());
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].data, "pong");
}

TEST_F(WsHeartbeatTest, EntryIsGoneAfterTheFifthTickAndPushesStopThen) {
  unitHost.hostAction(CCRUD::Create, "/watched", tavelabi::Resource(tavelabi::ResourceValue(0)));
  auto subscriber = std::make_shared<FakeConnection>("10.0.0.7", 5001);
  unitHost.manager().addListenerAndClient(upgradeRequest("", "", "10.0.0.7", 5001), subscriber,
                                          &WsResource::messageGenerator, "/watched",
                                          unitHost.openSession());
  heartbeat.extendHeartbeatCount("10.0.0.7");
  for (int expected = 4; expected >= 1; --expected) {
    tick();
    EXPECT_EQ(countOf("10.0.0.7"), expected);
    unitHost.update("/watched", expected);
  }
  EXPECT_EQ(subscriber->sent().size(), 4u);
  EXPECT_EQ(log.count("Unable to push "), 0u);

  tick();
  EXPECT_EQ(unitHost.connectivities().count("10.0.0.7"), 0u);
  unitHost.update("/watched", 0);
  EXPECT_EQ(subscriber->sent().size(), 4u);
  EXPECT_EQ(log.count(el::Level::Error,
                      "Unable to push /watched to client 10.0.0.7 - network connection issue"),
            1u);

  // The next ping makes the same subscription pushable again.
  heartbeat.handleNewMessage(conn, "ping", web::WebSocketMessageType::Text);
  unitHost.update("/watched", 9);
  ASSERT_EQ(subscriber->sent().size(), 5u);
  EXPECT_EQ(valueOfResourceFrame(subscriber->sent()[4].data), 9);
}

TEST_F(WsHeartbeatTest, PingDuringTheCountSetsItBackToFiveNeverAbove) {
  heartbeat.extendHeartbeatCount("10.0.0.7");
  tick();
  tick();
  EXPECT_EQ(countOf("10.0.0.7"), 3);
  heartbeat.handleNewMessage(conn, "x", web::WebSocketMessageType::Text);
  EXPECT_EQ(countOf("10.0.0.7"), 5);
  heartbeat.handleNewMessage(conn, "x", web::WebSocketMessageType::Text);
  heartbeat.handleNewMessage(conn, "x", web::WebSocketMessageType::Text);
  EXPECT_EQ(countOf("10.0.0.7"), 5);
}

TEST_F(WsHeartbeatTest, TwoSocketsFromOneAddressKeepOneEntry) {
  auto other = std::make_shared<FakeConnection>("10.0.0.7", 6000);
  heartbeat.handleNewConnection(upgradeRequest("SessionID=s"), conn);
  heartbeat.handleNewConnection(upgradeRequest("SessionID=s"), other);
  tick();
  heartbeat.handleNewMessage(other, "", web::WebSocketMessageType::Binary);
  EXPECT_EQ(unitHost.connectivities().size(), 1u);
  EXPECT_EQ(countOf("10.0.0.7"), 5);
}

TEST_F(WsHeartbeatTest, EmptyTableIsWrittenBackEmpty) {
  ASSERT_TRUE(unitHost.connectivities().empty());
  EXPECT_NO_THROW(tick());
  EXPECT_TRUE(unitHost.connectivities().empty());
  EXPECT_EQ(unitHost.host().peek(WsUnitHost::kConnectivities)->values.at("value").getType(),
            tavelabi::ResourceValueType::MAP_VALUE);
}

TEST_F(WsHeartbeatTest, BinaryAnyTextAndCloseFramesAreAllPings) {
  heartbeat.handleNewMessage(conn, std::string("\x00\xff", 2), web::WebSocketMessageType::Binary);
  heartbeat.handleNewMessage(conn, "anything at all", web::WebSocketMessageType::Text);
  heartbeat.handleNewMessage(conn, "", web::WebSocketMessageType::Close);
  ASSERT_EQ(conn->sent().size(), 3u);
  for (const auto& frame : conn->sent()) {
    EXPECT_EQ(frame.data, "pong");
    EXPECT_EQ(frame.type, web::WebSocketMessageType::Text);
  }
  // The frame's close handling is replaced here.
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_EQ(log.count("Client requested close."), 0u);
  EXPECT_EQ(log.count(el::Level::Debug, "received ping from client 10.0.0.7"), 3u);
}

TEST_F(WsHeartbeatTest, TableWithoutValueFailsTheConnectWithoutPong) {
  unitHost.hostAction(CCRUD::Create, WsUnitHost::kConnectivities,
                      tavelabi::Resource("other", tavelabi::ResourceValue(1)));
  heartbeat.handleNewConnection(upgradeRequest("SessionID=s"), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Error sending initial message: "), 1u);
  EXPECT_EQ(log.count(el::Level::Error, "map::at"), 1u);
}

TEST_F(WsHeartbeatTest, WithoutSessionTheConnectionStaysAndItsMessagesStillCount) {
  heartbeat.handleNewConnection(upgradeRequest(), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(unitHost.connectivities().count("10.0.0.7"), 0u);
  heartbeat.handleNewMessage(conn, "ping", web::WebSocketMessageType::Text);
  EXPECT_EQ(countOf("10.0.0.7"), 5);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].data, "pong");
}

}  // namespace
}  // namespace halvor::kelo::test
