#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "WsClient.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/Log.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::WebTestServer;
using halvor::kelo::test::WsClient;

namespace {

// Far more than the socket buffers of both ends hold, so that its write is still going on
// when a client that does not read sends its close; below the 16 MB that the client's stream
// accepts in one message, also while it skips messages waiting for the close answer.
constexpr std::size_t kBigMessage = 12 * 1024 * 1024;

// Records what the layer tells it and answers as the tests ask.
class RecordingController : public WebSocketControllerBase {
 public:
  void handleNewMessage(const WebSocketConnectionPtr& conn, std::string&& message,
                        const WebSocketMessageType& type) override {
    {
      std::lock_guard lock(mutex);
      messages.emplace_back(type, message);
    }
    if (type == WebSocketMessageType::Close) {
      conn->shutdown(1000, "");
      return;
    }
    if (message == "shutdown") return conn->shutdown(1011, "x");
    if (message == "throw") throw std::runtime_error("boom");
    if (message == "big")
      return conn->send(std::string(kBigMessage, 'b'), WebSocketMessageType::Binary);
    if (message == "binary")
      return conn->send(std::string("\x01\x02", 2), WebSocketMessageType::Binary);
    if (message == "shared") {
      // One buffer queued twice, as a fan-out hands the same frame to many connections.
      auto frame = std::make_shared<const std::string>("\x03\x00\x04", 3);
      conn->sendShared(frame, WebSocketMessageType::Binary);
      return conn->sendShared(frame, WebSocketMessageType::Text);
    }
    conn->send("echo:" + message);
  }
  void handleNewConnection(const HttpRequestPtr& req, const WebSocketConnectionPtr& conn) override {
    {
      std::lock_guard lock(mutex);
      sessionIds.push_back(req->getCookie("SessionID").empty() ? req->getParameter("SessionID")
                                                               : req->getCookie("SessionID"));
      connection = conn;
    }
    ++opened;
    EXPECT_TRUE(conn->connected());
    EXPECT_TRUE(conn->peerAddr().isLoopbackIp());
    conn->send(std::string("\x08\x01", 2), WebSocketMessageType::Binary);
  }
  void handleConnectionClosed(const WebSocketConnectionPtr& conn) override {
    EXPECT_FALSE(conn->connected());
    ++closed;
  }

  std::mutex mutex;
  std::vector<std::pair<WebSocketMessageType, std::string>> messages;
  std::vector<std::string> sessionIds;
  WebSocketConnectionPtr connection;
  std::atomic<int> opened{0};
  std::atomic<int> closed{0};
};

class WebSocketSessionTest : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    controller = std::make_shared<RecordingController>();
    server = std::make_unique<WebTestServer>(
        [this](HttpAppFramework& app) {
          app.config().clientMaxWebSocketMessageSize = 1024;
          app.config().clientMaxWebSocketSendQueue = 2 * kBigMessage;
          app.registerWebSocketController("/1/ws/test", controller, {Get});
        },
        tls());
  }
  void TearDown() override {
    server.reset();
    controller.reset();
  }
  bool tls() const { return GetParam(); }
  std::uint16_t port() const { return tls() ? server->tlsPort() : server->port(); }
  std::unique_ptr<WsClient> connect(const std::string& target = "/1/ws/test",
                                    const WsClient::Headers& headers = {}) {
    auto client = std::make_unique<WsClient>("127.0.0.1", port(), tls());
    client->connect(target, headers);
    return client;
  }

  std::shared_ptr<RecordingController> controller;
  std::unique_ptr<WebTestServer> server;
};

TEST_P(WebSocketSessionTest, UpgradeWithCookieFirstMessageAndEcho) {
  auto client = connect("/1/ws/test", {{"Cookie", "SessionID=cookie-id"}});
  auto first = client->receive(std::chrono::milliseconds(3000));
  ASSERT_TRUE(first);
  EXPECT_FALSE(first->text);
  EXPECT_EQ(first->data, std::string("\x08\x01", 2));
  client->sendText("hello");
  auto echo = client->receive(std::chrono::milliseconds(3000));
  ASSERT_TRUE(echo);
  EXPECT_TRUE(echo->text);
  EXPECT_EQ(echo->data, "echo:hello");
  client->sendBinary("binary");
  auto binary = client->receive(std::chrono::milliseconds(3000));
  ASSERT_TRUE(binary);
  EXPECT_FALSE(binary->text);
  EXPECT_EQ(binary->data, std::string("\x01\x02", 2));
  std::lock_guard lock(controller->mutex);
  EXPECT_EQ(controller->sessionIds, std::vector<std::string>{"cookie-id"});
  ASSERT_EQ(controller->messages.size(), 2u);
  EXPECT_EQ(controller->messages[0].first, WebSocketMessageType::Text);
  EXPECT_EQ(controller->messages[1].first, WebSocketMessageType::Binary);
}

TEST_P(WebSocketSessionTest, ASharedBufferIsSentWholeOncePerCallWithItsOwnType) {
  auto client = connect();
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  client->sendText("shared");
  auto binary = client->receive(std::chrono::milliseconds(3000));
  ASSERT_TRUE(binary);
  EXPECT_FALSE(binary->text);
  EXPECT_EQ(binary->data, std::string("\x03\x00\x04", 3));
  auto text = client->receive(std::chrono::milliseconds(3000));
  ASSERT_TRUE(text);
  EXPECT_TRUE(text->text);
  EXPECT_EQ(text->data, std::string("\x03\x00\x04", 3));
}

TEST_P(WebSocketSessionTest, QueryParameterReachesTheController) {
  auto client = connect("/1/ws/test?SessionID=a%20b");
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  std::lock_guard lock(controller->mutex);
  EXPECT_EQ(controller->sessionIds, std::vector<std::string>{"a b"});
}

TEST_P(WebSocketSessionTest, ClientCloseIsAnswered1000AndReportedOnce) {
  auto client = connect();
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  EXPECT_TRUE(client->close(1000, "bye"));
  EXPECT_EQ(client->closeCode(), 1000);
  EXPECT_EQ(client->closeReason(), "");
  EXPECT_TRUE(eventually([this] { return controller->closed == 1; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(controller->closed, 1);
  std::lock_guard lock(controller->mutex);
  ASSERT_FALSE(controller->messages.empty());
  EXPECT_EQ(controller->messages.back().first, WebSocketMessageType::Close);
  EXPECT_EQ(controller->messages.back().second, "bye");
}

TEST_P(WebSocketSessionTest, ClientCloseWithAnyCodeIsAnswered1000WithoutReason) {
  for (const std::uint16_t code : {1001, 4001}) {
    auto client = connect();
    ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
    EXPECT_TRUE(client->close(code, "going"));
    EXPECT_EQ(client->closeCode(), 1000) << "client code " << code;
    EXPECT_EQ(client->closeReason(), "") << "client code " << code;
  }
  EXPECT_TRUE(eventually([this] { return controller->closed == 2; }));
}

TEST_P(WebSocketSessionTest, ClientCloseWithACodeNoEndpointMaySendIsAnswered1002) {
  for (const std::uint16_t code : {1014, 2999, 5000, 65535}) {
    auto client = connect();
    ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
    EXPECT_TRUE(client->close(code, "odd"));
    EXPECT_EQ(client->closeCode(), 1002) << "client code " << code;
  }
  EXPECT_TRUE(eventually([this] { return controller->closed == 4; }));
  // A protocol error is not a close the controller is told of.
  std::lock_guard lock(controller->mutex);
  for (const auto& [type, text] : controller->messages) {
    EXPECT_NE(type, WebSocketMessageType::Close) << text;
  }
}

// The close frame arrives while the stream is busy writing: the answer still waits for that
// write and is then 1000, not the client's code.
TEST_P(WebSocketSessionTest, ClientCloseDuringALongWriteIsAnswered1000) {
  auto client = std::make_unique<WsClient>("127.0.0.1", port(), tls());
  client->setReceiveBufferSize(4096);
  client->setTimeout(std::chrono::milliseconds(30000));
  client->connect("/1/ws/test");
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  client->sendText("big");
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_TRUE(client->close(4001, ""));
  EXPECT_EQ(client->closeCode(), 1000);
  EXPECT_EQ(client->closeReason(), "");
  EXPECT_TRUE(eventually([this] { return controller->closed == 1; }));
}

TEST_P(WebSocketSessionTest, WhatAControllerThrowsIsLoggedAndTheConnectionGoesOn) {
  std::mutex linesMutex;
  std::vector<std::string> lines;
  setLogSink([&](int level, const std::string& line) {
    std::lock_guard lock(linesMutex);
    if (level == kError) lines.push_back(line);
  });
  auto client = connect();
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  client->sendText("throw");
  client->sendText("after");
  auto echo = client->receive(std::chrono::milliseconds(3000));
  ASSERT_TRUE(echo);
  EXPECT_EQ(echo->data, "echo:after");
  setLogSink(nullptr);
  std::lock_guard lock(linesMutex);
  EXPECT_EQ(lines, std::vector<std::string>{"WebSocket handleNewMessage threw: boom"});
}

TEST_P(WebSocketSessionTest, ServerShutdownCodeAndReasonReachTheClient) {
  auto client = connect();
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  client->sendText("shutdown");
  EXPECT_TRUE(client->waitForClose(std::chrono::milliseconds(3000)));
  EXPECT_EQ(client->closeCode(), 1011);
  EXPECT_EQ(client->closeReason(), "x");
  EXPECT_TRUE(eventually([this] { return controller->closed == 1; }));
}

TEST_P(WebSocketSessionTest, TooLargeMessageClosesWith1009) {
  auto client = connect();
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  client->sendText(std::string(2000, 'm'));
  EXPECT_TRUE(client->waitForClose(std::chrono::milliseconds(3000)));
  EXPECT_EQ(client->closeCode(), 1009);
  EXPECT_TRUE(eventually([this] { return controller->closed == 1; }));
}

TEST_P(WebSocketSessionTest, ClientThatGoesAwayIsReported) {
  {
    auto client = connect();
    ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  }
  EXPECT_TRUE(eventually([this] { return controller->closed == 1; }));
  EXPECT_TRUE(eventually([this] { return server->app().connectionCount() == 0; }));
  std::lock_guard lock(controller->mutex);
  EXPECT_FALSE(controller->connection->connected());
  // Sends on a closed connection are dropped quietly.
  controller->connection->send("late");
}

TEST_P(WebSocketSessionTest, OnlyGetUpgradesAndPlainGetIsRefused) {
  HttpClient http("127.0.0.1", port(), tls());
  EXPECT_EQ(http.request("POST", "/1/ws/test", "x").status, 405);
  EXPECT_EQ(http.get("/1/ws/test").status, 400);
  EXPECT_THROW(connect("/1/ws/unknown"), std::runtime_error);
  EXPECT_EQ(controller->opened, 0);
}

TEST_P(WebSocketSessionTest, QuitClosesWebSocketsAndReportsThem) {
  auto client = connect();
  ASSERT_TRUE(client->receive(std::chrono::milliseconds(3000)));
  server->stop();
  EXPECT_EQ(controller->closed, 1);
  EXPECT_TRUE(client->waitForClose(std::chrono::milliseconds(3000)));
}

INSTANTIATE_TEST_SUITE_P(PlainAndTls, WebSocketSessionTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& param) {
                           return param.param ? std::string("Tls") : std::string("Plain");
                         });

TEST(WebSocketRegistrationTest, WebSocketPathsAreListedApartWhateverTheirDescription) {
  HttpAppFramework app;
  app.registerHandler("/1/api/plain", [](const HttpRequestPtr&, ResponseCallback&&) {}, {Get});
  app.registerWebSocketController("/1/ws/first", std::make_shared<RecordingController>());
  app.registerWebSocketController("/1/ws/second", std::make_shared<RecordingController>(), {Get},
                                  "SecondController");
  EXPECT_EQ(app.getWebSocketPaths(), (std::vector<std::string>{"/1/ws/first", "/1/ws/second"}));
  // The route listing still names them, as GET routes.
  const auto info = app.getHandlersInfo();
  ASSERT_EQ(info.size(), 3u);
  EXPECT_EQ(info[1], std::make_tuple(std::string("/1/ws/first"), Get, std::string("WebSocket")));
  EXPECT_EQ(info[2],
            std::make_tuple(std::string("/1/ws/second"), Get, std::string("SecondController")));
}

}  // namespace
