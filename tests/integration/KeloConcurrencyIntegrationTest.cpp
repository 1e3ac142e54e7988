#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/web/HttpAppFramework.h"
#include "support/KeloCalls.h"
#include "support/KeloTestRoutes.h"
#include "support/KeloTestServer.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using test::KeloTestServer;
using test::KeloTestServerOptions;

// Clients on several I/O threads go through the frame while the host's loop runs the timed
// tasks, pings write the connectivity table and background tasks call the host.
TEST(KeloConcurrencyTest, FrameRoutesTimedTasksAndBackgroundTasksTogether) {
  KeloTestServerOptions options;
  options.registerRoutes = test::registerTestRoutes;
  options.ioThreads = 3;
  options.backgroundThreads = 2;
  options.fixtures = {R"({"resources": {"/test/alpha": {"value": {"string": "hello"}}}})"};
  KeloTestServer server(options);
  server.start();
  const std::string session = server.openSession("admin");

  std::atomic<bool> clientsDone{false};
  std::atomic<int> good{0};
  std::atomic<int> bad{0};
  std::vector<std::thread> clients;
  constexpr int kClients = 6;
  constexpr int kRequests = 150;
  for (int c = 0; c < kClients; ++c) {
    clients.emplace_back([&, c] {
      const bool tls = c % 2 == 1;
      test::HttpClient client("127.0.0.1", tls ? server.httpsPort() : server.httpPort(), tls);
      for (int i = 0; i < kRequests; ++i) {
        const auto resp =
            client.get(c % 3 == 0 ? "/1/test/resource?path=/test/alpha" : "/1/test/resources/alpha",
                       {{"Cookie", "SessionID=" + session}});
        if (resp.status == 200 && resp.body == R"({"local":true,"value":"hello"})") {
          ++good;
        } else {
          ++bad;
        }
      }
    });
  }

  std::thread pinger([&] {
    tavelabi::ResourceValue::Map table;
    for (int i = 0; !clientsDone; ++i) {
      table["10.0.0." + std::to_string(i % 5)] = ResourceValue(5);
      ResourceAction ping(CCRUD::Update, "/kelo/websocketConnectivities",
                          Resource(ResourceValue(table)), &server.kelo(), session);
      server.host().processResourceAction(ping);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });

  BackgroundTaskQueue* queue = web::app().getPlugin<BackgroundTaskQueue>();
  ASSERT_NE(queue, nullptr);
  std::atomic<int> backgroundRuns{0};
  constexpr int kBackgroundTasks = 100;
  std::thread poster([&] {
    for (int i = 0; i < kBackgroundTasks; ++i) {
      queue->runInBackground([&] {
        ResourceAction read(CCRUD::Read, "/test/alpha", &server.kelo(), session);
        server.host().processResourceAction(read);
        ++backgroundRuns;
      });
    }
  });

  // The host's loop, with a clock that runs a heartbeat pass on every turn.
  auto now = std::chrono::steady_clock::now();
  int passes = 0;
  while (good + bad < kClients * kRequests) {
    now += std::chrono::milliseconds(1100);
    if (server.kelo().produce(now)) {
      server.kelo().consume(now);
    }
    ++passes;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  for (auto& client : clients) {
    client.join();
  }
  clientsDone = true;
  pinger.join();
  poster.join();
  EXPECT_TRUE(KeloTestServer::waitFor([&] { return backgroundRuns == kBackgroundTasks; }));
  EXPECT_EQ(good.load(), kClients * kRequests);
  EXPECT_EQ(bad.load(), 0);
  EXPECT_GT(passes, 0);
  EXPECT_TRUE(server.kelo().isRunning());
}

}  // namespace
}  // namespace halvor::kelo
