#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "WsClient.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/Plugin.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::WebTestServer;
using halvor::kelo::test::WsClient;

namespace {

// Keeps every connection so that other threads can push to it.
class KeepingController : public WebSocketControllerBase {
 public:
  void handleNewMessage(const WebSocketConnectionPtr& conn, std::string&& message,
                        const WebSocketMessageType& type) override {
    if (type == WebSocketMessageType::Text && message == "bye") conn->shutdown(1000, "");
  }
  void handleNewConnection(const HttpRequestPtr& req, const WebSocketConnectionPtr& conn) override {
    std::lock_guard lock(mutex);
    connections[req->getParameter("name")] = conn;
  }
  void handleConnectionClosed(const WebSocketConnectionPtr& conn) override {
    std::lock_guard lock(mutex);
    ++closedCount[conn.get()];
  }
  WebSocketConnectionPtr get(const std::string& name) {
    std::lock_guard lock(mutex);
    auto it = connections.find(name);
    return it == connections.end() ? nullptr : it->second;
  }
  int closedTimes(const WebSocketConnectionPtr& conn) {
    std::lock_guard lock(mutex);
    return closedCount[conn.get()];
  }

  std::mutex mutex;
  std::map<std::string, WebSocketConnectionPtr> connections;
  std::map<const WebSocketConnection*, int> closedCount;
};

// A plug-in whose shutdown the controllers below watch for: a controller that runs while it
// shuts down, or after, counts a violation.
struct WatchedPlugin : Plugin<WatchedPlugin> {
  void initAndStart(const Json::Value& /*config*/) override {}
  void shutdown() override {
    down.store(true);
    {
      std::unique_lock lock(mutex);
      entered = true;
      changed.notify_all();
      changed.wait(lock, [this] { return released; });
    }
  }
  void release() {
    std::lock_guard lock(mutex);
    released = true;
    changed.notify_all();
  }
  bool waitUntilEntered() {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(10), [this] { return entered; });
  }

  std::atomic<bool> down{false};
  std::mutex mutex;
  std::condition_variable changed;
  bool entered = false;
  bool released = true;  // tests that want to hold the shutdown set it to false first
};

struct ControllerCalls {
  std::atomic<int> calls{0};
  std::atomic<int> violations{0};

  // Brackets one controller call; a plug-in shut down at either end is a violation.
  template <class F>
  void watch(WatchedPlugin& plugin, F&& body) {
    ++calls;
    if (plugin.down.load()) ++violations;
    body();
    if (plugin.down.load()) ++violations;
  }
};

class WatchingController : public WebSocketControllerBase {
 public:
  WatchingController(WatchedPlugin*& plugin, ControllerCalls& calls)
      : plugin_(plugin), calls_(calls) {}
  void handleNewMessage(const WebSocketConnectionPtr& conn, std::string&& message,
                        const WebSocketMessageType& type) override {
    if (type == WebSocketMessageType::Close) return;
    calls_.watch(*plugin_, [&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      conn->send("echo " + message);
    });
  }
  void handleNewConnection(const HttpRequestPtr&, const WebSocketConnectionPtr&) override {
    calls_.watch(*plugin_, [] {});
  }
  void handleConnectionClosed(const WebSocketConnectionPtr&) override {}

 private:
  WatchedPlugin*& plugin_;
  ControllerCalls& calls_;
};

// An application with WatchedPlugin, a handler at "/work" and a WebSocket controller at "/ws",
// all of which count their calls in `calls`.
WebTestServer::Configure watchedApplication(WatchedPlugin*& plugin, ControllerCalls& calls) {
  return [&plugin, &calls](HttpAppFramework& app) {
    app.registerPluginType<WatchedPlugin>("WatchedPlugin");
    Json::Value config;
    config["plugins"][0]["name"] = "WatchedPlugin";
    config["plugins"][0]["config"] = Json::objectValue;
    app.loadConfigJson(config);
    app.setThreadNum(2);
    plugin = app.getPlugin<WatchedPlugin>();
    app.registerHandler(
        "/work", [&plugin, &calls](const HttpRequestPtr&, ResponseCallback&& callback) {
          calls.watch(*plugin, [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); });
          callback(HttpResponse::newHttpResponse());
        });
    app.registerWebSocketController("/ws", std::make_shared<WatchingController>(plugin, calls));
  };
}

// Requests and WebSocket messages keep coming while the server stops: the plug-in shuts down
// with no controller call under way, and none begins after it.
TEST(WebConcurrencyTest, PluginsShutDownWhileNoControllerRuns) {
  WatchedPlugin* plugin = nullptr;
  ControllerCalls calls;
  WebTestServer server(watchedApplication(plugin, calls));
  std::atomic<bool> stop{false};
  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([&, c] {
      while (!stop.load()) {
        try {
          if (c % 2 == 0) {
            HttpClient client("127.0.0.1", server.port());
            client.setTimeout(std::chrono::milliseconds(2000));
            for (int i = 0; i < 20 && !stop.load(); ++i) client.get("/work");
          } else {
            WsClient client("127.0.0.1", server.port());
            client.setTimeout(std::chrono::milliseconds(2000));
            client.connect("/ws");
            for (int i = 0; i < 20 && !stop.load(); ++i) {
              client.sendText("m");
              client.receive(std::chrono::milliseconds(2000));
            }
          }
        } catch (const std::exception&) {
          // Refused or cut off once the server stops.
        }
      }
    });
  }
  ASSERT_TRUE(eventually([&] { return calls.calls.load() > 200; }, std::chrono::seconds(20)));
  server.stop();
  stop = true;
  for (auto& client : clients) client.join();
  EXPECT_TRUE(plugin->down.load());
  EXPECT_EQ(calls.violations.load(), 0);
}

// While the plug-in shuts down, a request on a kept-alive connection and a message on an open
// WebSocket arrive: neither reaches its controller, and the request is not left unanswered.
TEST(WebConcurrencyTest, NothingReachesAControllerOnceTheServerStops) {
  WatchedPlugin* plugin = nullptr;
  ControllerCalls calls;
  WebTestServer server(watchedApplication(plugin, calls));
  plugin->released = false;
  HttpClient http("127.0.0.1", server.port());
  http.setTimeout(std::chrono::milliseconds(5000));
  ASSERT_EQ(http.get("/work").status, 200);
  WsClient ws("127.0.0.1", server.port());
  ws.setTimeout(std::chrono::milliseconds(5000));
  ws.connect("/ws");
  ws.sendText("before");
  ASSERT_TRUE(ws.receive(std::chrono::milliseconds(5000)));
  const int callsBefore = calls.calls.load();

  std::thread stopper([&] { server.stop(); });
  ASSERT_TRUE(plugin->waitUntilEntered());
  http.sendRaw("GET /work HTTP/1.1\r\nHost: x\r\n\r\n");
  ws.sendText("after");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  plugin->release();
  stopper.join();

  // Either the 503 was written before the connection closed, or the close came first.
  try {
    EXPECT_EQ(http.readReply().status, 503);
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()).find("timed out"), std::string::npos) << error.what();
  }
  EXPECT_FALSE(ws.receive(std::chrono::milliseconds(1000)));
  EXPECT_EQ(calls.calls.load(), callsBefore);
  EXPECT_EQ(calls.violations.load(), 0);
}

TEST(WebConcurrencyTest, SendsFromOtherThreadsWhileTheConnectionCloses) {
  auto controller = std::make_shared<KeepingController>();
  WebTestServer server([&](HttpAppFramework& app) {
    app.setThreadNum(2);
    app.registerWebSocketController("/ws", controller);
  });
  for (int round = 0; round < 5; ++round) {
    std::string name = "c" + std::to_string(round);
    WsClient client("127.0.0.1", server.port());
    client.connect("/ws?name=" + name);
    ASSERT_TRUE(eventually([&] { return controller->get(name) != nullptr; }));
    WebSocketConnectionPtr conn = controller->get(name);
    std::atomic<bool> stop{false};
    std::vector<std::thread> pushers;
    for (int t = 0; t < 3; ++t) {
      pushers.emplace_back([conn, &stop, t] {
        while (!stop.load()) {
          conn->send("push " + std::to_string(t), WebSocketMessageType::Binary);
          if (t == 2) conn->connected();
          // Fast enough to race the close, slow enough for a client under a sanitizer to keep up.
          std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
      });
    }
    ASSERT_TRUE(client.receive(std::chrono::milliseconds(3000)));
    if (round % 2 == 0) {
      client.sendText("bye");  // the server closes
      EXPECT_TRUE(client.waitForClose(std::chrono::milliseconds(15000)));
    } else {
      EXPECT_TRUE(client.close());
    }
    EXPECT_TRUE(eventually([&] { return controller->closedTimes(conn) == 1; },
                           std::chrono::milliseconds(15000)));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    stop = true;
    for (auto& pusher : pushers) pusher.join();
    EXPECT_FALSE(conn->connected());
    EXPECT_EQ(controller->closedTimes(conn), 1);
  }
}

// One buffer handed to connections on both I/O threads by two pushing threads at once, as the
// fan-out of a change does: every client gets every frame whole.
TEST(WebConcurrencyTest, OneSharedBufferQueuedOnConnectionsOfSeveralIoThreads) {
  auto controller = std::make_shared<KeepingController>();
  WebTestServer server([&](HttpAppFramework& app) {
    app.setThreadNum(2);
    app.registerWebSocketController("/ws", controller);
  });
  constexpr int kClients = 4;
  constexpr int kFramesPerPusher = 100;
  std::vector<std::unique_ptr<WsClient>> clients;
  std::vector<WebSocketConnectionPtr> conns;
  for (int c = 0; c < kClients; ++c) {
    const std::string name = "s" + std::to_string(c);
    clients.push_back(std::make_unique<WsClient>("127.0.0.1", server.port()));
    clients.back()->connect("/ws?name=" + name);
    ASSERT_TRUE(eventually([&] { return controller->get(name) != nullptr; }));
    conns.push_back(controller->get(name));
  }
  const auto frame = std::make_shared<const std::string>(2048, 'f');
  std::vector<std::thread> pushers;
  for (int t = 0; t < 2; ++t) {
    pushers.emplace_back([&] {
      for (int i = 0; i < kFramesPerPusher; ++i) {
        for (const auto& conn : conns) conn->sendShared(frame, WebSocketMessageType::Binary);
      }
    });
  }
  for (auto& pusher : pushers) pusher.join();
  for (auto& client : clients) {
    int whole = 0;
    for (int i = 0; i < 2 * kFramesPerPusher; ++i) {
      auto message = client->receive(std::chrono::milliseconds(3000));
      ASSERT_TRUE(message);
      if (!message->text && message->data == *frame) ++whole;
    }
    EXPECT_EQ(whole, 2 * kFramesPerPusher);
  }
  EXPECT_EQ(*frame, std::string(2048, 'f'));
}

TEST(WebConcurrencyTest, ClientThatNeverReadsIsClosedAndOthersKeepWorking) {
  auto controller = std::make_shared<KeepingController>();
  WebTestServer server([&](HttpAppFramework& app) {
    app.setThreadNum(2);
    app.config().clientMaxWebSocketSendQueue = 256 * 1024;
    app.registerWebSocketController("/ws", controller);
  });
  WsClient stalled("127.0.0.1", server.port());
  stalled.setReceiveBufferSize(4096);
  stalled.connect("/ws?name=stalled");
  WsClient reader("127.0.0.1", server.port());
  reader.connect("/ws?name=reader");
  ASSERT_TRUE(eventually([&] { return controller->get("stalled") && controller->get("reader"); }));
  WebSocketConnectionPtr slow = controller->get("stalled");
  WebSocketConnectionPtr fast = controller->get("reader");

  std::atomic<bool> stop{false};
  std::atomic<long> pushed{0};
  std::thread pusher([&] {
    std::string block(16 * 1024, 'p');
    while (!stop.load()) {
      slow->send(block, WebSocketMessageType::Binary);
      if (pushed++ % 64 == 0) fast->send("tick");
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  });
  EXPECT_TRUE(eventually([&] { return controller->closedTimes(slow) == 1; },
                         std::chrono::milliseconds(20000)));
  EXPECT_FALSE(slow->connected());
  // The reader still gets its messages after the stalled one was dropped.
  int received = 0;
  for (int i = 0; i < 5; ++i) {
    auto message = reader.receive(std::chrono::milliseconds(3000));
    if (message && message->data == "tick") ++received;
  }
  stop = true;
  pusher.join();
  EXPECT_EQ(received, 5);
  EXPECT_TRUE(fast->connected());
  EXPECT_EQ(controller->closedTimes(fast), 0);
}

TEST(WebConcurrencyTest, AsynchronousResponsesFromManyThreads) {
  std::mutex workersMutex;
  std::vector<std::thread> workers;
  {
    WebTestServer server([&](HttpAppFramework& app) {
      app.setThreadNum(2);
      app.registerHandler(
          "/work/{n}", [&](const HttpRequestPtr& req, ResponseCallback&& callback, std::string n) {
            std::lock_guard lock(workersMutex);
            workers.emplace_back([req, n, callback = std::move(callback)] {
              auto resp = HttpResponse::newHttpResponse();
              resp->setBody(n + ":" + req->getHeader("X-Client"));
              callback(resp);
              callback(resp);  // a second answer is ignored
            });
          });
    });
    std::vector<std::thread> clients;
    std::atomic<int> good{0};
    for (int c = 0; c < 4; ++c) {
      clients.emplace_back([&, c] {
        HttpClient client("127.0.0.1", server.port());
        for (int i = 0; i < 25; ++i) {
          auto reply = client.get("/work/" + std::to_string(i), {{"X-Client", std::to_string(c)}});
          if (reply.body == std::to_string(i) + ":" + std::to_string(c)) ++good;
        }
      });
    }
    for (auto& client : clients) client.join();
    EXPECT_EQ(good, 100);
    std::lock_guard lock(workersMutex);
    for (auto& worker : workers) worker.join();
  }
}

TEST(WebConcurrencyTest, LateCallbackAfterTheServerStopped) {
  ResponseCallback kept;
  std::mutex keptMutex;
  {
    WebTestServer server([&](HttpAppFramework& app) {
      app.registerHandler("/hold", [&](const HttpRequestPtr&, ResponseCallback&& callback) {
        std::lock_guard lock(keptMutex);
        kept = std::move(callback);
      });
    });
    HttpClient client("127.0.0.1", server.port());
    client.setTimeout(std::chrono::milliseconds(300));
    client.sendRaw("GET /hold HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(eventually([&] {
      std::lock_guard lock(keptMutex);
      return static_cast<bool>(kept);
    }));
  }
  // The application is gone; the callback must neither crash nor leak.
  std::thread([&] {
    std::lock_guard lock(keptMutex);
    kept(HttpResponse::newHttpResponse());
    kept = nullptr;
  }).join();
}

}  // namespace
