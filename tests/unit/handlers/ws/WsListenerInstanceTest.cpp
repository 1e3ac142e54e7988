#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/handlers/ws/WsResource.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;

class WsListenerInstanceTest : public ::testing::Test {
 protected:
  WsListenerInstanceTest() { unitHost.setConnectivity("127.0.0.1", 5); }

  tavelabi::ResourceAction updateOf(const std::string& path, int value) {
    return tavelabi::ResourceAction(
        CCRUD::Update, path, tavelabi::Resource(tavelabi::ResourceValue(value)), nullptr, "");
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsListenerInstance instance{"/system/alarms/active", WsUnitHost::kLoggerId};
  std::string session = unitHost.openSession();
};

TEST_F(WsListenerInstanceTest, ListensToCreateAndUpdateOnly) {
  EXPECT_TRUE(instance.hasAction(CCRUD::Create));
  EXPECT_TRUE(instance.hasAction(CCRUD::Update));
  EXPECT_FALSE(instance.hasAction(CCRUD::Read));
  EXPECT_FALSE(instance.hasAction(CCRUD::Delete));
  EXPECT_FALSE(instance.hasAction(CCRUD::Command));
  EXPECT_EQ(static_cast<std::string>(instance), "/system/alarms/active");
}

TEST_F(WsListenerInstanceTest, KeyIsPeerAddressAndPortFollowedByThePattern) {
  auto conn = std::make_shared<FakeConnection>("10.0.0.5", 41312);
  EXPECT_EQ(instance.generateConnectionUuid(conn), "10.0.0.5:41312/system/alarms/active");
}

TEST_F(WsListenerInstanceTest, ExistingKeyKeepsTheOldEntry) {
  auto conn = std::make_shared<FakeConnection>();
  instance.addNewClient(upgradeRequest(), conn, "first", &WsResource::messageGenerator);
  instance.addNewClient(upgradeRequest(), conn, "second", &WsResource::messageGenerator);
  const auto clients = instance.getClients();
  ASSERT_EQ(clients.size(), 1u);
  EXPECT_EQ(clients.begin()->second.sessionId, "first");
  EXPECT_EQ(clients.begin()->first, clients.begin()->second.uuid);
}

TEST_F(WsListenerInstanceTest, PushRendersWithTheClientsOwnGeneratorSessionAndThePathOfTheChange) {
  auto conn = std::make_shared<FakeConnection>();
  std::string seenSession;
  std::string seenPath;
  instance.addNewClient(upgradeRequest(), conn, "mine",
                        [&](const web::HttpRequestPtr&, tavelabi::Resource& resource,
                            std::string sessionId, std::string& message, const std::string& path) {
                          seenSession = sessionId;
                          seenPath = path;
                          message = std::to_string(resource.values.at("value").getIntValue());
                        });
  auto action = updateOf("/system/alarms/active", 42);
  instance.processResourceListener({}, action);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].data, "42");
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  EXPECT_EQ(seenSession, "mine");
  EXPECT_EQ(seenPath, "/system/alarms/active");
}

TEST_F(WsListenerInstanceTest, ClientWithoutConnectivityEntryIsSkippedWithOneErrorPerChange) {
  unitHost.clearConnectivities();
  auto conn = std::make_shared<FakeConnection>();
  instance.addNewClient(upgradeRequest(), conn, session, &WsResource::messageGenerator);
  for (int i = 0; i < 3; ++i) {
    auto action = updateOf("/system/alarms/active", i);
    instance.processResourceListener({}, action);
  }
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error,
                      "Unable to push /system/alarms/active to client "
                      "127.0.0.1 - network connection issue"),
            3u);
  EXPECT_EQ(instance.getClients().size(), 1u);
}

TEST_F(WsListenerInstanceTest, EmptyGeneratorIsLoggedAndTheNextClientIsServed) {
  auto broken = std::make_shared<FakeConnection>("127.0.0.1", 40001);
  auto fine = std::make_shared<FakeConnection>("127.0.0.1", 40002);
  instance.addNewClient(upgradeRequest(), broken, session, MessageGenerator());
  instance.addNewClient(upgradeRequest(), fine, session, &WsResource::messageGenerator);
  unitHost.hostAction(CCRUD::Create, "/system/alarms/active",
                      tavelabi::Resource(tavelabi::ResourceValue(1)));
  auto action = updateOf("/system/alarms/active", 7);
  instance.processResourceListener({}, action);
  EXPECT_TRUE(broken->sent().empty());
  ASSERT_EQ(fine->sent().size(), 1u);
  EXPECT_EQ(valueOfResourceFrame(fine->sent()[0].data), 7);
  EXPECT_EQ(
      log.count(el::Level::Error, "Unable to push /system/alarms/active to client 127.0.0.1 - "),
      1u);
  EXPECT_EQ(log.count(el::Level::Error, "bad_function_call"), 1u);
  EXPECT_EQ(instance.getClients().size(), 2u);
}

TEST_F(WsListenerInstanceTest, FailedSendIsLoggedAndTheClientStays) {
  auto conn = std::make_shared<FakeConnection>();
  conn->throwOnSend = true;
  instance.addNewClient(upgradeRequest(), conn, session,
                        [](const web::HttpRequestPtr&, tavelabi::Resource&, std::string,
                           std::string& message, const std::string&) { message = "x"; });
  auto action = updateOf("/system/alarms/active", 1);
  instance.processResourceListener({}, action);
  EXPECT_EQ(log.count(el::Level::Error, "send failed on purpose"), 1u);
  EXPECT_EQ(instance.getClients().size(), 1u);
}

TEST_F(WsListenerInstanceTest, ConnectionThatIsDownIsSkippedSilently) {
  auto conn = std::make_shared<FakeConnection>();
  conn->open = false;
  int renderings = 0;
  instance.addNewClient(upgradeRequest(), conn, session,
                        [&](const web::HttpRequestPtr&, tavelabi::Resource&, std::string,
                            std::string& message, const std::string&) {
                          ++renderings;
                          message = "x";
                        });
  auto action = updateOf("/system/alarms/active", 1);
  instance.processResourceListener({}, action);
  EXPECT_EQ(renderings, 1);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(instance.getClients().size(), 1u);
}

TEST_F(WsListenerInstanceTest, DeadSessionLogsOnEveryChangeAndStaysSubscribed) {
  unitHost.hostAction(CCRUD::Create, "/system/alarms/active",
                      tavelabi::Resource(tavelabi::ResourceValue(1)));
  auto conn = std::make_shared<FakeConnection>();
  instance.addNewClient(upgradeRequest(), conn, "no-such-session", &WsResource::messageGenerator);
  for (int i = 0; i < 2; ++i) {
    auto action = updateOf("/system/alarms/active", i);
    instance.processResourceListener({}, action);
  }
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Session no-such-session does not exist"), 2u);
  EXPECT_TRUE(conn->shutdownCalls().empty());
}

TEST_F(WsListenerInstanceTest, ConnectivityAnswerWithoutValueLeavesTheFanOut) {
  unitHost.hostAction(CCRUD::Create, WsUnitHost::kConnectivities,
                      tavelabi::Resource("other", tavelabi::ResourceValue(1)));
  auto conn = std::make_shared<FakeConnection>();
  instance.addNewClient(upgradeRequest(), conn, session, &WsResource::messageGenerator);
  auto action = updateOf("/system/alarms/active", 1);
  EXPECT_THROW(instance.processResourceListener({}, action), std::out_of_range);
  // The guard released the shared lock: an exclusive operation still gets through.
  instance.removeClient(conn);
  EXPECT_TRUE(instance.getClients().empty());
}

TEST_F(WsListenerInstanceTest, RemoveClientShutsTheConnectionDownWith1000) {
  auto conn = std::make_shared<FakeConnection>();
  instance.addNewClient(upgradeRequest(), conn, session, &WsResource::messageGenerator);
  instance.removeClient(conn);
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1000);
  EXPECT_EQ(conn->shutdownCalls()[0].reason, "");
  EXPECT_TRUE(instance.getClients().empty());
}

TEST_F(WsListenerInstanceTest, RemovingAClientThatIsNotHereIsLogged) {
  auto conn = std::make_shared<FakeConnection>("10.1.1.1", 5555);
  instance.removeClient(conn);
  EXPECT_EQ(log.count(el::Level::Error,
                      "Could not remove. Missing client with uuid "
                      "10.1.1.1:5555/system/alarms/active."),
            1u);
  EXPECT_TRUE(conn->shutdownCalls().empty());
}

TEST_F(WsListenerInstanceTest, RemoveAllClientsClosesEachWith1000) {
  auto a = std::make_shared<FakeConnection>("127.0.0.1", 1);
  auto b = std::make_shared<FakeConnection>("127.0.0.1", 2);
  instance.addNewClient(upgradeRequest(), a, session, &WsResource::messageGenerator);
  instance.addNewClient(upgradeRequest(), b, session, &WsResource::messageGenerator);
  instance.removeAllClients();
  EXPECT_TRUE(instance.getClients().empty());
  for (const auto& conn : {a, b}) {
    ASSERT_EQ(conn->shutdownCalls().size(), 1u);
    EXPECT_EQ(conn->shutdownCalls()[0].code, 1000);
  }
}

// Generators of plain functions, as endpoints have them, that count their calls.
std::atomic<int> countingCalls{0};
std::atomic<int> otherCalls{0};

void countingGenerator(const web::HttpRequestPtr&, tavelabi::Resource& resource, std::string,
                       std::string& message, const std::string& path) {
  ++countingCalls;
  message = path + "=" + std::to_string(resource.values.at("value").getIntValue());
}

void otherGenerator(const web::HttpRequestPtr&, tavelabi::Resource&, std::string,
                    std::string& message, const std::string&) {
  ++otherCalls;
  message = "other";
}

void failingGenerator(const web::HttpRequestPtr&, tavelabi::Resource&, std::string, std::string&,
                      const std::string&) {
  ++countingCalls;
  throw std::runtime_error("cannot render on purpose");
}

class WsListenerInstanceSharingTest : public WsListenerInstanceTest {
 protected:
  WsListenerInstanceSharingTest() {
    countingCalls = 0;
    otherCalls = 0;
  }

  // Three clients of one address, so that the connectivity table holds all of them or none.
  std::vector<std::shared_ptr<FakeConnection>> subscribeThree(MessageGeneratorFunction generator,
                                                              bool resourceOnly) {
    std::vector<std::shared_ptr<FakeConnection>> conns;
    for (std::uint16_t port : {40001, 40002, 40003}) {
      conns.push_back(std::make_shared<FakeConnection>("127.0.0.1", port));
      instance.addNewClient(upgradeRequest(), conns.back(), session, generator, resourceOnly);
    }
    return conns;
  }
  void push(int value) {
    auto action = updateOf("/system/alarms/active", value);
    instance.processResourceListener({}, action);
  }
};

TEST_F(WsListenerInstanceSharingTest, ClientsOfOneResourceOnlyGeneratorGetOneRenderingOfAChange) {
  const auto conns = subscribeThree(&countingGenerator, true);
  push(7);
  EXPECT_EQ(countingCalls, 1);
  for (const auto& conn : conns) {
    ASSERT_EQ(conn->sent().size(), 1u);
    EXPECT_EQ(conn->sent()[0].data, "/system/alarms/active=7");
    EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
    ASSERT_EQ(conn->sharedBuffers().size(), 1u);
    EXPECT_EQ(conn->sharedBuffers()[0], conns[0]->sharedBuffers()[0]);
  }
  push(8);
  EXPECT_EQ(countingCalls, 2);
  for (const auto& conn : conns) {
    ASSERT_EQ(conn->sent().size(), 2u);
    EXPECT_EQ(conn->sent()[1].data, "/system/alarms/active=8");
  }
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(WsListenerInstanceSharingTest, ClientsOfAnyOtherGeneratorGetOneRenderingEach) {
  const auto conns = subscribeThree(&countingGenerator, false);
  push(7);
  EXPECT_EQ(countingCalls, 3);
  for (const auto& conn : conns) {
    ASSERT_EQ(conn->sent().size(), 1u);
    EXPECT_EQ(conn->sent()[0].data, "/system/alarms/active=7");
    EXPECT_TRUE(conn->sharedBuffers().empty());
  }
}

TEST_F(WsListenerInstanceSharingTest,
       AResourceOnlyClientWhoseGeneratorIsNoPlainFunctionIsRendered) {
  auto conn = std::make_shared<FakeConnection>();
  int renderings = 0;
  instance.addNewClient(
      upgradeRequest(), conn, session,
      [&](const web::HttpRequestPtr&, tavelabi::Resource&, std::string, std::string& message,
          const std::string&) {
        ++renderings;
        message = "mine";
      },
      true);
  push(1);
  push(2);
  EXPECT_EQ(renderings, 2);
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(conn->sent()[1].data, "mine");
}

TEST_F(WsListenerInstanceSharingTest, EachResourceOnlyGeneratorRendersAChangeOnce) {
  std::vector<std::shared_ptr<FakeConnection>> counting;
  std::vector<std::shared_ptr<FakeConnection>> other;
  for (std::uint16_t port = 40001; port <= 40004; ++port) {
    auto conn = std::make_shared<FakeConnection>("127.0.0.1", port);
    const bool even = port % 2 == 0;
    (even ? counting : other).push_back(conn);
    instance.addNewClient(upgradeRequest(), conn, session,
                          even ? &countingGenerator : &otherGenerator, true);
  }
  push(3);
  EXPECT_EQ(countingCalls, 1);
  EXPECT_EQ(otherCalls, 1);
  for (const auto& conn : counting) {
    ASSERT_EQ(conn->sent().size(), 1u);
    EXPECT_EQ(conn->sent()[0].data, "/system/alarms/active=3");
  }
  for (const auto& conn : other) {
    ASSERT_EQ(conn->sent().size(), 1u);
    EXPECT_EQ(conn->sent()[0].data, "other");
  }
}

TEST_F(WsListenerInstanceSharingTest, ALapsedClientAmongSharingClientsIsLoggedAndSkipped) {
  unitHost.clearConnectivities();
  unitHost.setConnectivity("10.0.0.1", 5);
  unitHost.setConnectivity("10.0.0.3", 5);
  std::vector<std::shared_ptr<FakeConnection>> conns;
  for (const char* ip : {"10.0.0.1", "10.0.0.2", "10.0.0.3"}) {
    conns.push_back(std::make_shared<FakeConnection>(ip, 40001));
    instance.addNewClient(upgradeRequest(), conns.back(), session, &countingGenerator, true);
  }
  push(5);
  EXPECT_EQ(countingCalls, 1);
  ASSERT_EQ(conns[0]->sent().size(), 1u);
  EXPECT_TRUE(conns[1]->sent().empty());
  ASSERT_EQ(conns[2]->sent().size(), 1u);
  EXPECT_EQ(conns[2]->sent()[0].data, conns[0]->sent()[0].data);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, el::Level::Error);
  EXPECT_EQ(log.count(el::Level::Error,
                      "Unable to push /system/alarms/active to client "
                      "10.0.0.2 - network connection issue"),
            1u);
  EXPECT_EQ(instance.getClients().size(), 3u);
}

TEST_F(WsListenerInstanceSharingTest, NothingIsRenderedWhenEveryClientLapsed) {
  unitHost.clearConnectivities();
  subscribeThree(&countingGenerator, true);
  push(5);
  EXPECT_EQ(countingCalls, 0);
  EXPECT_EQ(log.count(el::Level::Error, "network connection issue"), 3u);
}

TEST_F(WsListenerInstanceSharingTest, AClosedConnectionAmongSharingClientsIsSkippedSilently) {
  const auto conns = subscribeThree(&countingGenerator, true);
  conns[1]->open = false;
  push(4);
  EXPECT_EQ(countingCalls, 1);
  EXPECT_EQ(conns[0]->sent().size(), 1u);
  EXPECT_TRUE(conns[1]->sent().empty());
  EXPECT_EQ(conns[2]->sent().size(), 1u);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(instance.getClients().size(), 3u);
}

TEST_F(WsListenerInstanceSharingTest, AFailedSharedRenderingLogsForEveryClientAsSeparateOnesWould) {
  subscribeThree(&failingGenerator, false);
  push(1);
  EXPECT_EQ(countingCalls, 3);
  const auto separate = log.lines();
  log.clear();
  instance.removeAllClients();

  countingCalls = 0;
  const auto conns = subscribeThree(&failingGenerator, true);
  push(1);
  EXPECT_EQ(countingCalls, 1);
  const auto shared = log.lines();
  ASSERT_EQ(separate.size(), 3u);
  ASSERT_EQ(shared.size(), separate.size());
  for (std::size_t i = 0; i < shared.size(); ++i) {
    EXPECT_EQ(shared[i].level, el::Level::Error);
    EXPECT_EQ(shared[i].text, separate[i].text);
  }
  EXPECT_EQ(log.count(el::Level::Error, "cannot render on purpose"), 3u);
  for (const auto& conn : conns) {
    EXPECT_TRUE(conn->sent().empty());
  }
}

TEST_F(WsListenerInstanceSharingTest, AFailedSendToOneSharingClientLeavesTheOthersServed) {
  const auto conns = subscribeThree(&countingGenerator, true);
  conns[0]->throwOnSend = true;
  push(2);
  EXPECT_EQ(countingCalls, 1);
  EXPECT_EQ(log.count(el::Level::Error, "send failed on purpose"), 1u);
  EXPECT_TRUE(conns[0]->sent().empty());
  EXPECT_EQ(conns[1]->sent().size(), 1u);
  EXPECT_EQ(conns[2]->sent().size(), 1u);
}

}  // namespace
}  // namespace halvor::kelo::test
