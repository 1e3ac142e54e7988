#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "WsClient.h"
#include "kelo/web/HttpAppFramework.h"

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
