#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "integration/WsIntegrationHelpers.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class WsResourceIntegrationTest : public ::testing::Test {
 protected:
  void start(KeloTestServerOptions options = {}) {
    server = std::make_unique<KeloTestServer>(options);
    if (configure) configure(*server);
    server->start();
    hostWrite(*server, CCRUD::Create, "/tx/power", Resource(ResourceValue(40)));
    session = server->openSession("admin");
  }
  ResourceListenerManager& manager() { return *web::app().getPlugin<ResourceListenerManager>(); }

  std::function<void(KeloTestServer&)> configure;
  std::unique_ptr<KeloTestServer> server;
  std::string session;
};

TEST_F(WsResourceIntegrationTest, FirstMessageIsTheResourceThenEachChangeWhileThePingIsAlive) {
  start();
  auto ping = startHeartbeat(*server, session);
  auto client = openWs(*server, "/1/ws/resource?path=%2Ftx%2Fpower", session);
  auto first = client->receive(5s);
  ASSERT_TRUE(first);
  EXPECT_FALSE(first->text);
  EXPECT_EQ(intValueOf(*first), 40);
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().size() == 1; }));

  for (int value = 41; value <= 43; ++value) {
    hostUpdate(*server, "/tx/power", value);
    auto push = client->receive(5s);
    ASSERT_TRUE(push);
    EXPECT_EQ(intValueOf(*push), value);
  }
}

TEST_F(WsResourceIntegrationTest, SessionInTheQueryIsUrlDecoded) {
  start();
  auto ping = startHeartbeat(*server, session);
  // The identity travels percent-coded; the host knows it only decoded.
  const std::string custom = "we+ird/id";
  server->host().openSession("viewer", custom);
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power&SessionID=we%2Bird%2Fid");
  auto first = client->receive(5s);
  ASSERT_TRUE(first);
  EXPECT_EQ(intValueOf(*first), 40);
}

TEST_F(WsResourceIntegrationTest, UnknownSessionIsClosedWith1011) {
  start();
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power", "no-such-session");
  EXPECT_FALSE(client->receive(5s));
  EXPECT_EQ(client->closeCode(), 1011);
  EXPECT_EQ(client->closeReason(), "Invalid session ID.");
  ASSERT_TRUE(
      KeloTestServer::waitFor([&] { return logCount(*server, "Invalid Session ID: ") == 1; }));
}

TEST_F(WsResourceIntegrationTest, WithoutSessionTheSocketStaysOpenAndSilent) {
  start();
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power");
  EXPECT_FALSE(client->receive(500ms));
  EXPECT_TRUE(client->isOpen());
  EXPECT_TRUE(KeloTestServer::waitFor(
      [&] { return logCount(*server, "Error sending initial message: ") == 1; }));
  EXPECT_GE(logCount(*server, "Request missing query parameter: SessionID."), 1u);
  EXPECT_TRUE(manager().clientCounts().empty());
}

TEST_F(WsResourceIntegrationTest, ClientCloseGetsOne1000AndUnsubscribes) {
  start();
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(client->receive(5s));
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().size() == 1; }));
  // The answer on the wire (code 1000, empty reason) is checked by tests/wire/ws_push.py: this
  // client reports a close handshake that its own async_close completed as a failure.
  client->close(1000, "");
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().empty(); }));
  ASSERT_TRUE(KeloTestServer::waitFor([&] {
    return logCount(*server, "handleConnectionClosed() is called for 127.0.0.1 -> 127.0.0.1") == 1;
  }));
  EXPECT_EQ(logCount(*server, "Client requested close."), 1u);
}

TEST_F(WsResourceIntegrationTest, ClientCloseWithAnyCodeIsAnswered1000WithoutReason) {
  start();
  for (const std::uint16_t code : {1001, 4001}) {
    auto client = openWs(*server, "/1/ws/resource?path=/tx/power", session);
    ASSERT_TRUE(client->receive(5s));
    client->close(code, "leaving");
    EXPECT_EQ(client->closeCode(), 1000) << "client code " << code;
    EXPECT_EQ(client->closeReason(), "") << "client code " << code;
  }
  EXPECT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().empty(); }));
}

TEST_F(WsResourceIntegrationTest, TextFramesFromTheClientAreIgnored) {
  start();
  auto ping = startHeartbeat(*server, session);
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(client->receive(5s));
  ASSERT_TRUE(waitForSubscribers("/tx/power", 1));
  client->sendText("hello?");
  client->sendBinary(std::string("\x01\x02\x03", 3));
  EXPECT_FALSE(client->receive(300ms));
  hostUpdate(*server, "/tx/power", 50);
  auto push = client->receive(5s);
  ASSERT_TRUE(push);
  EXPECT_EQ(intValueOf(*push), 50);
}

TEST_F(WsResourceIntegrationTest, WithoutHeartbeatNothingIsPushedAndEachChangeIsLogged) {
  start();
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(client->receive(5s));
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().size() == 1; }));
  hostUpdate(*server, "/tx/power", 1);
  hostUpdate(*server, "/tx/power", 2);
  EXPECT_FALSE(client->receive(300ms));
  const std::string line =
      "Unable to push /tx/power to client 127.0.0.1 - network connection issue";
  KeloTestServer::waitFor([&] { return logCount(*server, line) >= 2; });
  EXPECT_EQ(logCount(*server, line), 2u) << server->readLog();
}

TEST_F(WsResourceIntegrationTest, PathUnderAWiderGlobGetsOnlyItsFirstMessage) {
  start();
  // The first read of a glob subscription is made with the glob's own text.
  hostWrite(*server, CCRUD::Create, "/tx/**", Resource(ResourceValue(0)));
  auto ping = startHeartbeat(*server, session);
  auto wide = openWs(*server, "/1/ws/resource?path=/tx/**", session);
  ASSERT_TRUE(wide->receive(5s));
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().size() == 1; }));
  auto narrow = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  auto first = narrow->receive(5s);
  ASSERT_TRUE(first);
  EXPECT_EQ(intValueOf(*first), 40);
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return logCount(*server, "map::at") >= 1; }));
  EXPECT_EQ(logCount(*server, "Error sending initial message: "), 1u);

  hostUpdate(*server, "/tx/power", 44);
  auto push = wide->receive(5s);
  ASSERT_TRUE(push);
  EXPECT_EQ(intValueOf(*push), 44);
  EXPECT_FALSE(narrow->receive(300ms));
  EXPECT_TRUE(narrow->isOpen());
}

TEST_F(WsResourceIntegrationTest, SessionThatDiesWhileSubscribedLogsEachChangeAndTheSocketStays) {
  KeloTestServerOptions options;
  options.sessionTimeout = 700ms;
  start(options);
  auto ping = startHeartbeat(*server, session);
  auto client = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(client->receive(5s));
  ASSERT_TRUE(waitForSubscribers("/tx/power", 1));
  // Renderings do not count as activity: the session runs out while pushes go on.
  for (int i = 0; i < 3; ++i) {
    std::this_thread::sleep_for(300ms);
    ping->sendText("ping");
    ping->receive(1s);
    hostUpdate(*server, "/tx/power", 100 + i);
  }
  int received = 0;
  while (client->receive(200ms)) ++received;
  EXPECT_LT(received, 3);
  const std::size_t before = logCount(*server, "does not exist");
  ASSERT_GE(before, 1u);
  hostUpdate(*server, "/tx/power", 200);
  hostUpdate(*server, "/tx/power", 201);
  EXPECT_TRUE(
      KeloTestServer::waitFor([&] { return logCount(*server, "does not exist") == before + 2; }));
  EXPECT_EQ(logCount(*server, "Unable to push /tx/power to client 127.0.0.1 - "),
            logCount(*server, "does not exist"));
  EXPECT_FALSE(client->receive(300ms));
  EXPECT_TRUE(client->isOpen());
}

TEST_F(WsResourceIntegrationTest, ClientThatNeverReadsIsClosedAndTheOthersKeepEveryPush) {
  configure = [](KeloTestServer& s) {
    setWebAppOption(s, "client_max_websocket_send_queue", "256K");
  };
  start();
  auto ping = startHeartbeat(*server, session);
  auto stuck = std::make_unique<WsClient>("127.0.0.1", server->httpPort());
  stuck->setReceiveBufferSize(4096);
  stuck->connect("/1/ws/resource?path=/tx/power", {{"Cookie", "SessionID=" + session}});
  auto reader = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(reader->receive(5s));
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts()["/tx/power"] == 2; }));

  constexpr int kPushes = 400;
  // The reader is never more than this many pushes behind, so its queue stays far below the
  // limit however busy the machine is; the client that never reads falls behind without bound.
  constexpr int kReaderLead = 4;
  const std::string filler(16 * 1024, 'x');
  std::atomic<int> received{0};
  std::atomic<bool> readerGaveUp{false};
  std::thread host([&] {
    for (int i = 0; i < kPushes && !readerGaveUp; ++i) {
      KeloTestServer::waitFor([&] { return received >= i - kReaderLead || readerGaveUp; }, 10s);
      Resource resource{ResourceValue(i)};
      resource.addValue("filler", ResourceValue(filler));
      hostWrite(*server, CCRUD::Update, "/tx/power", resource);
    }
    server->host().waitForListeners();
  });
  int expected = 0;
  bool inOrder = true;
  while (expected < kPushes) {
    auto push = reader->receive(10s);
    if (!push) break;
    if (intValueOf(*push) != expected) inOrder = false;
    received = ++expected;
  }
  readerGaveUp = true;
  host.join();
  EXPECT_EQ(expected, kPushes);
  EXPECT_TRUE(inOrder);
  // 400 pushes of 16 KB are far beyond the 256 KB queue and the small receive buffer.
  EXPECT_TRUE(stuck->waitForClose(10s));
  EXPECT_EQ(stuck->closeCode(), 1008);
}

TEST_F(WsResourceIntegrationTest, MegabytesOfClientFramesAreIgnoredAndAnOversizedOneCloses) {
  start();
  auto ping = startHeartbeat(*server, session);
  auto noisy = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  auto quiet = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  ASSERT_TRUE(noisy->receive(5s));
  ASSERT_TRUE(quiet->receive(5s));
  ASSERT_TRUE(waitForSubscribers("/tx/power", 2));
  const std::string chunk(100 * 1024, 'z');
  for (int i = 0; i < 80; ++i) noisy->sendBinary(chunk);  // 8 MB, each under the frame limit
  hostUpdate(*server, "/tx/power", 7);
  auto pushNoisy = noisy->receive(5s);
  ASSERT_TRUE(pushNoisy);
  EXPECT_EQ(intValueOf(*pushNoisy), 7);
  // One frame above the configured 128 KB message limit ends the connection.
  // The server may cut the connection while the frame is still being written (broken pipe).
  bool cutWhileWriting = false;
  try {
    noisy->sendBinary(std::string(1024 * 1024, 'y'));
  } catch (const std::runtime_error&) {
    cutWhileWriting = true;
  }
  if (!cutWhileWriting) {
    EXPECT_TRUE(noisy->waitForClose(5s));
    EXPECT_EQ(noisy->closeCode(), 1009);
  }
  EXPECT_FALSE(noisy->receive(200ms));
  hostUpdate(*server, "/tx/power", 8);
  auto pushQuiet = quiet->receive(5s);
  ASSERT_TRUE(pushQuiet);  // the first push, 7
  EXPECT_EQ(intValueOf(*pushQuiet), 7);
  pushQuiet = quiet->receive(5s);
  ASSERT_TRUE(pushQuiet);
  EXPECT_EQ(intValueOf(*pushQuiet), 8);
}

TEST_F(WsResourceIntegrationTest, ManagerShutdownClosesEveryClientWith1000AndLeavesNoListener) {
  start();
  auto ping = startHeartbeat(*server, session);
  hostWrite(*server, CCRUD::Create, "/tx/freq", Resource(ResourceValue(1)));
  auto a = openWs(*server, "/1/ws/resource?path=/tx/power", session);
  auto b = openWs(*server, "/1/ws/resource?path=/tx/freq", session);
  ASSERT_TRUE(a->receive(5s));
  ASSERT_TRUE(b->receive(5s));
  ASSERT_TRUE(KeloTestServer::waitFor([&] { return manager().clientCounts().size() == 2; }));
  manager().shutdown();
  EXPECT_TRUE(manager().clientCounts().empty());
  for (auto* client : {a.get(), b.get()}) {
    EXPECT_TRUE(client->waitForClose(5s));
    EXPECT_EQ(client->closeCode(), 1000);
  }
  // No listener is left with the host: a change reaches nobody and logs nothing.
  const std::size_t lines = logCount(*server, "Unable to push");
  hostUpdate(*server, "/tx/power", 99);
  EXPECT_EQ(logCount(*server, "Unable to push"), lines);
}

}  // namespace
}  // namespace halvor::kelo::test
