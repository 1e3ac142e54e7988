#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "kelo/web/HttpAppFramework.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::HttpReply;
using halvor::kelo::test::WebTestServer;

namespace {

// More than the socket buffers of both ends hold while the client does not read (the sender's
// grows to 4 MB at most here), so that the answer is still being written when the server stops.
std::string largeBody() {
  std::string body(7 * 1024 * 1024, '\0');
  for (std::size_t i = 0; i < body.size(); ++i) body[i] = static_cast<char>('a' + i % 26);
  return body;
}

void addLargeAnswer(HttpAppFramework& app, const std::string& body, std::atomic<bool>& answered) {
  app.registerHandler("/large",
                      [&body, &answered](const HttpRequestPtr&, ResponseCallback&& callback) {
                        auto response = HttpResponse::newHttpResponse();
                        response->setContentTypeCode(CT_TEXT_PLAIN);
                        response->setBody(body);
                        callback(response);
                        answered = true;
                      });
}

// Stops the server from a thread of its own (stop() returns only once the server has finished)
// and waits until the shutdown has begun, plus a moment for the I/O threads to close what they
// close.
class StoppingServer {
 public:
  explicit StoppingServer(WebTestServer& server) : server_(server) {
    stopper_ = std::thread([this] { server_.stop(); });
    EXPECT_TRUE(eventually([this] { return !server_.app().isRunning(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  }
  ~StoppingServer() { waitUntilStopped(); }
  void waitUntilStopped() {
    if (stopper_.joinable()) stopper_.join();
  }

 private:
  WebTestServer& server_;
  std::thread stopper_;
};

void expectLargeAnswerSurvivesShutdown(bool tls) {
  const std::string body = largeBody();
  std::atomic<bool> answered{false};
  WebTestServer server([&](HttpAppFramework& app) { addLargeAnswer(app, body, answered); }, tls);
  HttpClient client("127.0.0.1", tls ? server.tlsPort() : server.port(), tls);
  client.sendRaw("GET /large HTTP/1.1\r\nHost: localhost\r\n\r\n");
  ASSERT_TRUE(eventually([&] { return answered.load(); }));

  StoppingServer stopping(server);
  HttpReply reply = client.readReply();

  // The head went out before the shutdown, as a keep-alive answer; the close comes after it.
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body.size(), body.size());
  EXPECT_TRUE(reply.body == body);
  EXPECT_TRUE(client.waitForClose(std::chrono::seconds(5)));
  client.close();  // the server waits for the client's end of the connection until its grace ends
}

}  // namespace

TEST(ShutdownConcurrencyTest, AnAnswerBeingWrittenOverTlsIsWrittenWholeBeforeTheServerStops) {
  expectLargeAnswerSurvivesShutdown(true);
}

TEST(ShutdownConcurrencyTest, AnAnswerBeingWrittenOverPlainHttpIsWrittenWholeBeforeTheServerStops) {
  expectLargeAnswerSurvivesShutdown(false);
}

TEST(ShutdownConcurrencyTest, ARequestAHandlerStillHoldsIsAnswered503AtShutdown) {
  std::mutex mutex;
  std::optional<ResponseCallback> held;
  WebTestServer server([&](HttpAppFramework& app) {
    app.registerHandler("/never", [&](const HttpRequestPtr&, ResponseCallback&& callback) {
      std::lock_guard lock(mutex);
      held = std::move(callback);
    });
  });
  HttpClient client("127.0.0.1", server.port());
  client.sendRaw("GET /never HTTP/1.1\r\nHost: localhost\r\n\r\n");
  ASSERT_TRUE(eventually([&] {
    std::lock_guard lock(mutex);
    return held.has_value();
  }));

  StoppingServer stopping(server);
  HttpReply reply = client.readReply();

  EXPECT_EQ(reply.status, 503);
  EXPECT_EQ(reply.header("Connection"), "close");
  EXPECT_TRUE(client.waitForClose(std::chrono::seconds(5)));
  client.close();
  stopping.waitUntilStopped();
  // The handler's late answer, once the server has stopped, goes nowhere and harms nothing.
  std::lock_guard lock(mutex);
  (*held)(HttpResponse::newHttpResponse());
}

TEST(ShutdownConcurrencyTest, AnIdleKeepAliveConnectionIsClosedAtShutdown) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/ok", [](const HttpRequestPtr&, ResponseCallback&& callback) {
      callback(HttpResponse::newHttpResponse());
    });
  });
  HttpClient client("127.0.0.1", server.port());
  ASSERT_EQ(client.get("/ok").status, 200);

  StoppingServer stopping(server);
  EXPECT_TRUE(client.waitForClose(std::chrono::seconds(2)));
}
