#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/handlers/ws/WsResource.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;

class ResourceListenerManagerTest : public ::testing::Test {
 protected:
  ResourceListenerManagerTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    for (const char* path : {"/a/b", "/a/c", "/p1", "/p2", "/p3"}) {
      unitHost.hostAction(CCRUD::Create, path, tavelabi::Resource(tavelabi::ResourceValue(0)));
    }
  }

  std::shared_ptr<FakeConnection> subscribe(const std::string& path, std::uint16_t port,
                                            const std::string& ip = "127.0.0.1") {
    auto conn = std::make_shared<FakeConnection>(ip, port);
    manager().addListenerAndClient(upgradeRequest("", "", ip, port), conn,
                                   &WsResource::messageGenerator, path, session);
    return conn;
  }
  ResourceListenerManager& manager() { return unitHost.manager(); }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  std::string session = unitHost.openSession();
};

TEST_F(ResourceListenerManagerTest, TwoClientsOfOnePathShareOneInstanceUntilTheLastLeaves) {
  auto first = subscribe("/a/b", 1);
  auto second = subscribe("/a/b", 2);
  ASSERT_EQ(manager().getListeners().size(), 1u);
  WsListenerInstance* instance = manager().getListeners().at("/a/b");
  EXPECT_EQ(instance->getClients().size(), 2u);

  // One host listener: each client gets exactly one frame per change.
  unitHost.update("/a/b", 11);
  ASSERT_EQ(first->sent().size(), 1u);
  ASSERT_EQ(second->sent().size(), 1u);
  EXPECT_EQ(valueOfResourceFrame(first->sent()[0].data), 11);

  manager().removeClient(first);
  ASSERT_EQ(manager().getListeners().size(), 1u);
  unitHost.update("/a/b", 12);
  EXPECT_EQ(second->sent().size(), 2u);

  manager().removeClient(second);
  EXPECT_TRUE(manager().getListeners().empty());
  // The host no longer calls the removed listener.
  unitHost.update("/a/b", 13);
  EXPECT_EQ(second->sent().size(), 2u);
}

TEST_F(ResourceListenerManagerTest, TwoClientsBehindOneAddressHaveTwoKeysAndShareOneHeartbeat) {
  auto first = subscribe("/a/b", 1000);
  auto second = subscribe("/a/b", 2000);
  const auto clients = manager().getListeners().at("/a/b")->getClients();
  ASSERT_EQ(clients.size(), 2u);
  EXPECT_EQ(clients.count("127.0.0.1:1000/a/b"), 1u);
  EXPECT_EQ(clients.count("127.0.0.1:2000/a/b"), 1u);
  // The single entry of their address lets both through.
  EXPECT_EQ(unitHost.connectivities().size(), 1u);
  unitHost.update("/a/b", 5);
  EXPECT_EQ(first->sent().size(), 1u);
  EXPECT_EQ(second->sent().size(), 1u);
}

TEST_F(ResourceListenerManagerTest, GlobKeyTakesTheSameGlobButNotANarrowerPath) {
  auto first = subscribe("/a/**", 1);
  auto second = subscribe("/a/**", 2);
  ASSERT_EQ(manager().getListeners().size(), 1u);
  EXPECT_EQ(manager().getListeners().at("/a/**")->getClients().size(), 2u);

  auto narrow = std::make_shared<FakeConnection>("127.0.0.1", 3);
  try {
    manager().addListenerAndClient(upgradeRequest(), narrow, &WsResource::messageGenerator, "/a/b",
                                   session);
    FAIL() << "a path under a wider key must not find its own instance";
  } catch (const std::out_of_range& error) {
    EXPECT_NE(std::string(error.what()).find("map::at"), std::string::npos);
  }
  EXPECT_EQ(manager().getListeners().size(), 1u);

  // The glob instance reports changes with their concrete paths.
  unitHost.update("/a/c", 3);
  ASSERT_EQ(first->sent().size(), 1u);
  EXPECT_EQ(valueOfResourceFrame(first->sent()[0].data), 3);
  EXPECT_TRUE(narrow->sent().empty());
}

TEST_F(ResourceListenerManagerTest, OnlyCreateAndUpdatePush) {
  auto conn = subscribe("/a/b", 1);
  unitHost.hostAction(CCRUD::Read, "/a/b");
  unitHost.hostAction(CCRUD::Delete, "/a/b");
  EXPECT_TRUE(conn->sent().empty());
  unitHost.hostAction(CCRUD::Create, "/a/b", tavelabi::Resource(tavelabi::ResourceValue(1)));
  EXPECT_EQ(conn->sent().size(), 1u);
  unitHost.update("/a/b", 2);
  EXPECT_EQ(conn->sent().size(), 2u);
}

TEST_F(ResourceListenerManagerTest, NoHeartbeatMeansOneErrorPerChangeAndClientAndNoFrame) {
  unitHost.clearConnectivities();
  auto first = subscribe("/a/b", 1);
  auto second = subscribe("/a/b", 2);
  unitHost.update("/a/b", 1);
  unitHost.update("/a/b", 2);
  EXPECT_TRUE(first->sent().empty());
  EXPECT_TRUE(second->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error,
                      "Unable to push /a/b to client 127.0.0.1 - network connection issue"),
            4u);
}

TEST_F(ResourceListenerManagerTest, ClosingOneConnectionLogsForEveryInstanceThatDidNotHoldIt) {
  subscribe("/p1", 11);
  subscribe("/p2", 12);
  subscribe("/p3", 13);
  auto leaving = subscribe("/a/b", 14);
  manager().removeClient(leaving);
  EXPECT_EQ(log.count(el::Level::Error, "Could not remove. Missing client with uuid "), 3u);
  EXPECT_EQ(log.count(el::Level::Error, "Missing client with uuid 127.0.0.1:14/p1."), 1u);
  EXPECT_EQ(manager().getListeners().size(), 3u);
  EXPECT_EQ(manager().getListeners().count("/a/b"), 0u);
}

TEST_F(ResourceListenerManagerTest, ShutdownLeavesNoListenerAndClosesEveryClientWith1000) {
  auto a = subscribe("/p1", 1);
  auto b = subscribe("/p2", 2);
  auto c = subscribe("/p2", 3);
  manager().shutdown();
  EXPECT_TRUE(manager().getListeners().empty());
  for (const auto& conn : {a, b, c}) {
    ASSERT_EQ(conn->shutdownCalls().size(), 1u);
    EXPECT_EQ(conn->shutdownCalls()[0].code, 1000);
    EXPECT_EQ(conn->shutdownCalls()[0].reason, "");
  }
  // Nothing is called any more: a live fake that is still "open" would have received frames.
  for (const auto& conn : {a, b, c}) conn->open = true;
  unitHost.update("/p1", 1);
  unitHost.update("/p2", 1);
  EXPECT_TRUE(a->sent().empty());
  EXPECT_TRUE(b->sent().empty());
}

TEST_F(ResourceListenerManagerTest, NewInstanceTakesTheManagersLoggerId) {
  unitHost.clearConnectivities();
  manager().setLoggerId("OtherLogger");
  LogCapture other("OtherLogger");
  subscribe("/a/b", 1);
  unitHost.update("/a/b", 1);
  EXPECT_EQ(other.count(el::Level::Error, "network connection issue"), 1u);
  EXPECT_EQ(log.count("network connection issue"), 0u);
}

}  // namespace
}  // namespace halvor::kelo::test
