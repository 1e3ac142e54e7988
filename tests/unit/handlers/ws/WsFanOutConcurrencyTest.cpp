#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/handlers/ws/WsHeartbeat.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/handlers/ws/WsResource.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;

// A generator that renders from the resource alone, for clients that share renderings.
void valueGenerator(const web::HttpRequestPtr&, tavelabi::Resource& resource, std::string,
                    std::string& message, const std::string&) {
  message = std::to_string(resource.values.at("value").getIntValue());
}

// Subscriptions come and go on several threads while the host dispatches updates of their paths,
// pings and the heartbeat task rewrite the connectivity table, and the manager finally shuts
// down with clients still arriving. Half of the clients share renderings, half are rendered one
// by one.
TEST(WsFanOutConcurrencyTest, SubscribeLeavePushPingAndShutdownTogether) {
  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  const std::vector<std::string> paths = {"/c/a", "/c/b", "/c/**"};
  for (const char* path : {"/c/a", "/c/b", "/c/**"}) {
    unitHost.hostAction(CCRUD::Create, path, tavelabi::Resource(tavelabi::ResourceValue(0)));
  }
  const std::string session = unitHost.openSession();
  WsHeartbeat heartbeat;
  std::atomic<bool> stop{false};
  std::atomic<int> frames{0};
  std::atomic<int> joined{0};

  std::thread host([&] {
    for (int i = 0; !stop.load(); ++i) {
      tavelabi::ResourceAction action(CCRUD::Update, i % 2 ? "/c/a" : "/c/b",
                                      tavelabi::Resource(tavelabi::ResourceValue(i)), nullptr, "");
      unitHost.host().processInternalAction(action);
      std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
  });
  std::thread ticker([&] {
    while (!stop.load()) {
      try {
        unitHost.plugin().checkHeartbeat();
      } catch (const std::exception&) {
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  });

  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([&, c] {
      const auto pinger = std::make_shared<FakeConnection>("127.0.0.1", 30000 + c);
      for (int round = 0; round < 150; ++round) {
        heartbeat.handleNewMessage(pinger, "ping", web::WebSocketMessageType::Text);
        const auto conn = std::make_shared<FakeConnection>(
            "127.0.0.1", static_cast<std::uint16_t>(1000 + c * 1000 + round));
        try {
          const bool sharing = c % 2 == 1;
          unitHost.manager().addListenerAndClient(
              upgradeRequest(), conn,
              sharing ? MessageGeneratorFunction(&valueGenerator) : &WsResource::messageGenerator,
              paths[(c + round) % paths.size()], session, sharing);
          ++joined;
        } catch (const std::out_of_range&) {
          // A path under the wider "/c/**" key: expected while that key exists.
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        frames += static_cast<int>(conn->sent().size());
        unitHost.manager().removeClient(conn);
      }
    });
  }
  for (auto& client : clients) client.join();

  // Shutdown with a few clients still subscribed and updates still coming.
  std::vector<std::shared_ptr<FakeConnection>> remaining;
  for (int i = 0; i < 3; ++i) {
    remaining.push_back(std::make_shared<FakeConnection>("127.0.0.1", 60000 + i));
    unitHost.manager().addListenerAndClient(upgradeRequest(), remaining.back(),
                                            &WsResource::messageGenerator, "/c/**", session);
  }
  unitHost.manager().shutdown();
  stop = true;
  host.join();
  ticker.join();

  EXPECT_GT(joined.load(), 0);
  EXPECT_GT(frames.load(), 0);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
  for (const auto& conn : remaining) {
    ASSERT_EQ(conn->shutdownCalls().size(), 1u);
    EXPECT_EQ(conn->shutdownCalls()[0].code, 1000);
  }
}

}  // namespace
}  // namespace halvor::kelo::test
