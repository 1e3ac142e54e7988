#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "integration/WsIntegrationHelpers.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

// Clients connect, ping, subscribe and leave on several threads while the host updates their
// paths, the heartbeat task ages the table, and finally the plug-in shuts down under them.
TEST(WsConcurrencyIntegrationTest, ClientsComeAndGoWhileTheHostUpdatesAndThePluginStops) {
  KeloTestServerOptions options;
  options.ioThreads = 3;
  KeloTestServer server(options);
  server.start();
  const std::vector<std::string> paths = {"/tx/a", "/tx/b", "/tx/c"};
  for (const auto& path : paths) hostWrite(server, CCRUD::Create, path, Resource(ResourceValue(0)));
  const std::string session = server.openSession("admin");
  const std::uint16_t port = server.httpPort();

  std::atomic<bool> stop{false};
  std::atomic<bool> stopTicker{false};
  std::atomic<int> pushes{0};
  std::atomic<int> rounds{0};

  std::thread host([&] {
    for (int i = 1; !stop.load(); ++i) {
      hostWrite(server, CCRUD::Update, paths[i % paths.size()], Resource(ResourceValue(i)));
      std::this_thread::sleep_for(2ms);
    }
  });
  std::thread ticker([&] {
    while (!stopTicker.load()) {
      try {
        server.kelo().checkHeartbeat();
      } catch (const std::exception&) {
        // The table may be mid-write by a ping; the next tick tries again.
      }
      std::this_thread::sleep_for(20ms);
    }
  });

  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([&, c] {
      for (int round = 0; !stop.load(); ++round) {
        try {
          WsClient ping("127.0.0.1", port);
          ping.connect("/1/ws/ping", {{"Cookie", "SessionID=" + session}});
          ping.receive(2s);
          WsClient sub("127.0.0.1", port);
          sub.connect("/1/ws/resource?path=" + paths[(c + round) % paths.size()],
                      {{"Cookie", "SessionID=" + session}});
          for (int i = 0; i < 5; ++i) {
            if (sub.receive(500ms)) ++pushes;
            ping.sendText("ping");
            ping.receive(500ms);
          }
          // Half of the rounds close politely, the others just drop the socket.
          if (round % 2 == 0) sub.close(1000, "");
          ++rounds;
        } catch (const std::exception&) {
          // Refused once the server is stopping.
        }
      }
    });
  }

  std::this_thread::sleep_for(3s);
  // The host stops its loop before it deletes the plug-in; clients and updates go on.
  stopTicker = true;
  ticker.join();
  server.deletePlugin();  // the web application quits and the plug-ins shut down under the load
  stop = true;
  for (auto& client : clients) client.join();
  host.join();

  EXPECT_GT(rounds.load(), 4);
  EXPECT_GT(pushes.load(), 10);
  EXPECT_TRUE(web::app().getPlugin<ResourceListenerManager>()->getListeners().empty());
}

}  // namespace
}  // namespace halvor::kelo::test
