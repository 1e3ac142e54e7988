#include <gtest/gtest.h>

#include <string>

#include "integration/WsIntegrationHelpers.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class WsHeartbeatIntegrationTest : public ::testing::Test {
 protected:
  WsHeartbeatIntegrationTest() {
    server.start();
    session = server.openSession("viewer");
  }
  tavelabi::ResourceValue::Map table() {
    return server.host().peek("/kelo/websocketConnectivities")->values.at("value").getMapValue();
  }
  int count() { return table().at("127.0.0.1").getIntValue(); }
  // One pass of the plug-in's once-a-second task, as the host's loop would run it.
  void tick() { server.kelo().checkHeartbeat(); }

  KeloTestServer server;
  std::string session;
};

TEST_F(WsHeartbeatIntegrationTest, ConnectAnswersPongAndWritesFive) {
  auto ping = openWs(server, "/1/ws/ping", session);
  auto pong = ping->receive(5s);
  ASSERT_TRUE(pong);
  EXPECT_TRUE(pong->text);
  EXPECT_EQ(pong->data, "pong");
  EXPECT_EQ(count(), 5);
  EXPECT_TRUE(KeloTestServer::waitFor(
      [&] { return logCount(server, "start heartbeat with 127.0.0.1") == 1; }));
}

TEST_F(WsHeartbeatIntegrationTest, WrongSessionIsNotRefused) {
  auto ping = openWs(server, "/1/ws/ping", "made-up");
  auto pong = ping->receive(5s);
  ASSERT_TRUE(pong);
  EXPECT_EQ(pong->data, "pong");
  EXPECT_TRUE(ping->isOpen());
}

TEST_F(WsHeartbeatIntegrationTest, BinaryAndAnyTextAreAnsweredPong) {
  auto ping = startHeartbeat(server, session);
  ping->sendBinary(std::string("\x00\x01\x02", 3));
  ping->sendText("not a ping at all");
  ping->sendText("");
  for (int i = 0; i < 3; ++i) {
    auto pong = ping->receive(5s);
    ASSERT_TRUE(pong);
    EXPECT_TRUE(pong->text);
    EXPECT_EQ(pong->data, "pong");
  }
}

TEST_F(WsHeartbeatIntegrationTest, EntryGoesAfterTheFifthTickThenPushesStopUntilTheNextPing) {
  hostWrite(server, CCRUD::Create, "/tx/power", Resource(ResourceValue(0)));
  auto ping = startHeartbeat(server, session);
  auto client = openWs(server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(client->receive(5s));
  ASSERT_TRUE(waitForSubscribers("/tx/power", 1));
  for (int expected = 4; expected >= 1; --expected) {
    tick();
    EXPECT_EQ(count(), expected);
    hostUpdate(server, "/tx/power", expected);
    auto push = client->receive(5s);
    ASSERT_TRUE(push);
    EXPECT_EQ(intValueOf(*push), expected);
  }
  tick();
  EXPECT_EQ(table().count("127.0.0.1"), 0u);
  EXPECT_EQ(logCount(server, "Unable to push "), 0u);
  hostUpdate(server, "/tx/power", 100);
  EXPECT_FALSE(client->receive(300ms));
  EXPECT_TRUE(KeloTestServer::waitFor([&] {
    return logCount(server,
                    "Unable to push /tx/power to client 127.0.0.1 - network connection issue") == 1;
  }));

  ping->sendText("ping");
  ASSERT_TRUE(ping->receive(5s));
  hostUpdate(server, "/tx/power", 101);
  auto push = client->receive(5s);
  ASSERT_TRUE(push);
  EXPECT_EQ(intValueOf(*push), 101);
}

TEST_F(WsHeartbeatIntegrationTest, PingDuringTheCountRestoresFiveNeverMore) {
  auto ping = startHeartbeat(server, session);
  tick();
  tick();
  tick();
  EXPECT_EQ(count(), 2);
  ping->sendText("ping");
  ASSERT_TRUE(ping->receive(5s));
  EXPECT_EQ(count(), 5);
  for (int i = 0; i < 4; ++i) {
    ping->sendText("ping");
    ASSERT_TRUE(ping->receive(5s));
  }
  EXPECT_EQ(count(), 5);
}

TEST_F(WsHeartbeatIntegrationTest, TwoSocketsFromOneAddressShareOneEntry) {
  auto first = startHeartbeat(server, session);
  tick();
  auto second = startHeartbeat(server, session);
  EXPECT_EQ(table().size(), 1u);
  EXPECT_EQ(count(), 5);
  tick();
  first->sendText("ping");
  ASSERT_TRUE(first->receive(5s));
  EXPECT_EQ(table().size(), 1u);
  EXPECT_EQ(count(), 5);
}

TEST_F(WsHeartbeatIntegrationTest, ClosingThePingSocketLeavesTheEntryToRunOut) {
  auto ping = startHeartbeat(server, session);
  ping->close(1000, "");
  ASSERT_TRUE(KeloTestServer::waitFor(
      [&] { return logCount(server, "handleConnectionClosed() is called for") == 1; }));
  EXPECT_EQ(count(), 5);
  for (int i = 0; i < 5; ++i) tick();
  EXPECT_TRUE(table().empty());
}

TEST_F(WsHeartbeatIntegrationTest, EmptyTableIsWrittenBackEmpty) {
  ASSERT_TRUE(table().empty());
  EXPECT_NO_THROW(tick());
  EXPECT_TRUE(table().empty());
}

}  // namespace
}  // namespace halvor::kelo::test
