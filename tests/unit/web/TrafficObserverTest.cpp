#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "WsClient.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/TrafficObserver.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::WebTestServer;
using halvor::kelo::test::WsClient;

namespace {

struct Seen {
  std::string route;
  HttpMethod method;
  int status;
  std::chrono::steady_clock::duration elapsed;
};

class RecordingObserver : public TrafficObserver {
 public:
  void onResponse(const std::string& route, HttpMethod method, int status,
                  std::chrono::steady_clock::duration elapsed) override {
    std::lock_guard lock(mutex);
    seen.push_back({route, method, status, elapsed});
  }
  std::vector<Seen> all() {
    std::lock_guard lock(mutex);
    return seen;
  }

  std::mutex mutex;
  std::vector<Seen> seen;
};

class SilentController : public WebSocketControllerBase {
 public:
  void handleNewMessage(const WebSocketConnectionPtr&, std::string&&,
                        const WebSocketMessageType&) override {}
  void handleNewConnection(const HttpRequestPtr&, const WebSocketConnectionPtr&) override {}
  void handleConnectionClosed(const WebSocketConnectionPtr&) override {}
};

class TrafficObserverTest : public ::testing::Test {
 protected:
  void SetUp() override {
    server = std::make_unique<WebTestServer>([this](HttpAppFramework& application) {
      application.setTrafficObserver(observer)
          .registerHandler(
              "/items/{id}",
              [](const HttpRequestPtr&, ResponseCallback&& callback, const std::string& id) {
                auto resp = HttpResponse::newHttpResponse();
                resp->setStatusCode(id == "missing" ? 404 : 200);
                callback(resp);
              },
              {Get, Post})
          .registerHandler("/slow",
                           [](const HttpRequestPtr&, ResponseCallback&& callback) {
                             std::this_thread::sleep_for(std::chrono::milliseconds(30));
                             callback(HttpResponse::newHttpResponse());
                           },
                           {Get})
          .registerWebSocketController("/ws", std::make_shared<SilentController>());
    });
  }

  std::shared_ptr<RecordingObserver> observer = std::make_shared<RecordingObserver>();
  std::unique_ptr<WebTestServer> server;
};

TEST_F(TrafficObserverTest, IsToldTheRouteTemplateTheMethodAndTheStatusOfEachResponse) {
  HttpClient http("127.0.0.1", server->port());
  EXPECT_EQ(http.get("/items/7").status, 200);
  EXPECT_EQ(http.request("POST", "/items/missing").status, 404);
  ASSERT_TRUE(eventually([&] { return observer->all().size() == 2; }));
  const std::vector<Seen> seen = observer->all();
  EXPECT_EQ(seen[0].route, "/items/{id}");
  EXPECT_EQ(seen[0].method, Get);
  EXPECT_EQ(seen[0].status, 200);
  EXPECT_EQ(seen[1].route, "/items/{id}");
  EXPECT_EQ(seen[1].method, Post);
  EXPECT_EQ(seen[1].status, 404);
}

TEST_F(TrafficObserverTest, AnswersOfTheLayerItselfHaveNoRoute) {
  HttpClient http("127.0.0.1", server->port());
  EXPECT_EQ(http.get("/nowhere").status, 404);
  EXPECT_EQ(http.request("DELETE", "/items/7").status, 405);
  ASSERT_TRUE(eventually([&] { return observer->all().size() == 2; }));
  const std::vector<Seen> seen = observer->all();
  EXPECT_EQ(seen[0].route, "");
  EXPECT_EQ(seen[0].status, 404);
  EXPECT_EQ(seen[1].route, "");
  EXPECT_EQ(seen[1].status, 405);
}

TEST_F(TrafficObserverTest, MeasuresFromTheCompleteRequestToTheResponse) {
  HttpClient http("127.0.0.1", server->port());
  EXPECT_EQ(http.get("/slow").status, 200);
  ASSERT_TRUE(eventually([&] { return observer->all().size() == 1; }));
  EXPECT_GE(observer->all()[0].elapsed, std::chrono::milliseconds(30));
  EXPECT_LT(observer->all()[0].elapsed, std::chrono::seconds(5));
}

TEST_F(TrafficObserverTest, CountsAnAcceptedUpgradeWithStatus101AndTheOpenWebSocket) {
  EXPECT_EQ(server->app().webSocketCount(), 0u);
  {
    WsClient client("127.0.0.1", server->port());
    client.connect("/ws");
    ASSERT_TRUE(eventually([&] { return server->app().webSocketCount() == 1; }));
    EXPECT_EQ(server->app().connectionCount(), 1u);
    const std::vector<Seen> seen = observer->all();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].route, "/ws");
    EXPECT_EQ(seen[0].status, 101);
  }
  EXPECT_TRUE(eventually([&] { return server->app().webSocketCount() == 0; }));
}

TEST(TrafficObserverRegistrationTest, IsRefusedAfterRun) {
  WebTestServer server([](HttpAppFramework&) {});
  EXPECT_THROW(server.app().setTrafficObserver(std::make_shared<RecordingObserver>()),
               std::logic_error);
}

}  // namespace
