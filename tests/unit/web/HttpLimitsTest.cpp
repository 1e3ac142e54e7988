#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <mutex>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "kelo/web/HttpAppFramework.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::HttpReply;
using halvor::kelo::test::WebTestServer;
namespace fs = std::filesystem;

namespace {

void addEcho(HttpAppFramework& app) {
  app.registerHandler("/echo", [](const HttpRequestPtr& req, ResponseCallback&& callback) {
    auto resp = HttpResponse::newHttpResponse();
    resp->setBody(std::string(req->body()));
    callback(resp);
  });
}

TEST(HttpLimitsTest, MalformedRequestsGet400AndClose) {
  WebTestServer server(addEcho);
  for (const std::string& bad :
       {std::string("GARBAGE\r\n\r\n"), std::string("GET /echo HTTP/9.9\r\n\r\n"),
        std::string("GET /echo HTTP/1.1\r\nBad Header\r\n\r\n"),
        std::string("GET /echo HTTP/1.1\r\nContent-Length: x\r\n\r\n"),
        std::string("GET nopath HTTP/1.1\r\n\r\n")}) {
    HttpClient client("127.0.0.1", server.port());
    client.sendRaw(bad);
    HttpReply reply = client.readReply();
    EXPECT_EQ(reply.status, 400) << bad;
    EXPECT_EQ(reply.header("Connection"), "close");
  }
  HttpClient client("127.0.0.1", server.port());
  EXPECT_EQ(client.request("POST", "/echo", "fine").body, "fine");
}

TEST(HttpLimitsTest, HeadersOver16KGet431) {
  WebTestServer server(addEcho);
  HttpClient client("127.0.0.1", server.port());
  client.sendRaw("GET /echo HTTP/1.1\r\nHost: x\r\nX-Big: " + std::string(17 * 1024, 'a') +
                 "\r\n\r\n");
  EXPECT_EQ(client.readReply().status, 431);
  HttpClient fine("127.0.0.1", server.port());
  EXPECT_EQ(fine.get("/echo", {{"X-Big", std::string(15 * 1024, 'a')}}).status, 200);
}

TEST(HttpLimitsTest, BodyOverTheLimitGets413WithoutBeingRead) {
  std::atomic<int> calls{0};
  WebTestServer server([&calls](HttpAppFramework& app) {
    app.config().clientMaxBodySize = 1000;
    app.registerHandler("/up", [&calls](const HttpRequestPtr&, ResponseCallback&& callback) {
      ++calls;
      callback(HttpResponse::newHttpResponse());
    });
  });
  HttpClient client("127.0.0.1", server.port());
  // Only the header is sent: the answer must not wait for the body.
  client.sendRaw("POST /up HTTP/1.1\r\nHost: x\r\nContent-Length: 5000000\r\n\r\n");
  HttpReply reply = client.readReply();
  EXPECT_EQ(reply.status, 413);
  EXPECT_TRUE(client.waitForClose(std::chrono::milliseconds(5000)));
  HttpClient chunked("127.0.0.1", server.port());
  chunked.sendRaw(
      "POST /up HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n"
      "7d0\r\n" +
      std::string(2000, 'b') + "\r\n0\r\n\r\n");
  EXPECT_EQ(chunked.readReply().status, 413);
  EXPECT_EQ(calls, 0);
  HttpClient fine("127.0.0.1", server.port());
  EXPECT_EQ(fine.request("POST", "/up", std::string(1000, 'c')).status, 200);
  EXPECT_EQ(calls, 1);
}

TEST(HttpLimitsTest, LargeBodyGoesToATemporaryFileRemovedAfterTheRequest) {
  std::mutex mutex;
  std::string seenPath;
  std::string seenStart;
  WebTestServer server([&](HttpAppFramework& app) {
    app.config().clientMaxMemoryBodySize = 1024;
    app.config().clientMaxBodySize = 1024 * 1024;
    app.registerHandler("/upload", [&](const HttpRequestPtr& req, ResponseCallback&& callback) {
      std::lock_guard lock(mutex);
      seenPath = req->bodyFilePath();
      seenStart = std::string(req->body().substr(0, 3));
      auto resp = HttpResponse::newHttpResponse();
      resp->setBody(std::to_string(req->bodyLength()));
      callback(resp);
    });
  });
  const std::string body = "abc" + std::string(200000, 'q');
  HttpClient client("127.0.0.1", server.port());
  HttpReply reply =
      client.request("POST", "/upload", body, {{"Content-Type", "application/octet-stream"}});
  EXPECT_EQ(reply.body, std::to_string(body.size()));
  {
    std::lock_guard lock(mutex);
    EXPECT_FALSE(seenPath.empty());
    EXPECT_EQ(seenStart, "abc");
  }
  // The next request on the connection reuses the request object, which drops the file.
  EXPECT_EQ(client.request("POST", "/upload", "small").status, 200);
  std::lock_guard lock(mutex);
  EXPECT_TRUE(eventually([&] { return !fs::exists(seenPath); }));
}

TEST(HttpLimitsTest, IdleConnectionsAreClosed) {
  WebTestServer server([](HttpAppFramework& app) {
    app.config().idleConnectionTimeout = 1;
    addEcho(app);
  });
  HttpClient client("127.0.0.1", server.port());
  EXPECT_EQ(client.request("POST", "/echo", "x").status, 200);
  auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(client.waitForClose(std::chrono::milliseconds(5000)));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  EXPECT_TRUE(eventually([&] { return server.app().connectionCount() == 0; }));
}

TEST(HttpLimitsTest, ConnectionsPerIpAreLimited) {
  WebTestServer server([](HttpAppFramework& app) {
    app.config().maxConnectionsPerIp = 2;
    addEcho(app);
  });
  HttpClient first("127.0.0.1", server.port());
  HttpClient second("127.0.0.1", server.port());
  EXPECT_EQ(first.request("POST", "/echo", "1").body, "1");
  EXPECT_EQ(second.request("POST", "/echo", "2").body, "2");
  HttpClient third("127.0.0.1", server.port());
  third.connect();
  EXPECT_TRUE(third.waitForClose(std::chrono::milliseconds(3000)));
  first.close();
  EXPECT_TRUE(eventually([&] { return server.app().connectionCount() == 1; }));
  HttpClient fourth("127.0.0.1", server.port());
  EXPECT_EQ(fourth.request("POST", "/echo", "4").body, "4");
}

TEST(HttpLimitsTest, MaxConnectionsRefusesBeyond) {
  WebTestServer server([](HttpAppFramework& app) {
    app.config().maxConnections = 1;
    addEcho(app);
  });
  HttpClient first("127.0.0.1", server.port());
  EXPECT_EQ(first.request("POST", "/echo", "1").body, "1");
  HttpClient second("127.0.0.1", server.port());
  second.connect();
  EXPECT_TRUE(second.waitForClose(std::chrono::milliseconds(3000)));
  EXPECT_EQ(first.request("POST", "/echo", "again").body, "again");
}

TEST(HttpLimitsTest, QuitClosesOpenConnections) {
  WebTestServer server(addEcho);
  HttpClient client("127.0.0.1", server.port());
  EXPECT_EQ(client.request("POST", "/echo", "x").status, 200);
  server.stop();
  EXPECT_TRUE(client.waitForClose(std::chrono::milliseconds(3000)));
}

}  // namespace
