#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

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

// Clients on several I/O threads read one static file while it is replaced: each answer is one
// whole version of it, never a mix.
TEST(HttpHardeningConcurrencyTest, AStaticFileSharedAcrossThreadsIsAlwaysOneWholeVersion) {
  char pattern[] = "/tmp/kelo-shared-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const fs::path root = pattern;
  const std::string first(100000, 'a');
  const std::string second(70000, 'b');
  std::ofstream(root / "app.js") << first;
  WebTestServer server([&root](HttpAppFramework& app) {
    app.setThreadNum(2);
    app.config().documentRoot = root.string();
  });
  std::atomic<int> bad{0};
  std::atomic<int> answered{0};
  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([&] {
      HttpClient client("127.0.0.1", server.port());
      for (int i = 0; i < 40; ++i) {
        HttpReply reply = client.get("/app.js");
        if (reply.status != 200 || (reply.body != first && reply.body != second)) ++bad;
        ++answered;
      }
    });
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  std::ofstream(root / "next.js") << second;
  fs::rename(root / "next.js", root / "app.js");
  for (auto& client : clients) client.join();
  EXPECT_EQ(answered, 160);
  EXPECT_EQ(bad, 0);
  fs::remove_all(root);
}

// Bodies that go to disk at once on several threads never pass the budget together, and give
// every byte back.
TEST(HttpHardeningConcurrencyTest, BodiesOnSeveralThreadsShareOneDiskBudget) {
  WebTestServer server([](HttpAppFramework& app) {
    app.setThreadNum(2);
    app.config().clientMaxMemoryBodySize = 1024;
    app.config().clientMaxDiskBodyTotal = 20000;
    app.registerHandler("/up", [](const HttpRequestPtr& req, ResponseCallback&& callback) {
      auto resp = HttpResponse::newHttpResponse();
      resp->setBody(std::to_string(req->body().size()));
      callback(resp);
    });
  });
  std::atomic<int> accepted{0};
  std::atomic<int> refused{0};
  std::atomic<int> other{0};
  std::vector<std::thread> clients;
  for (int c = 0; c < 6; ++c) {
    clients.emplace_back([&] {
      for (int i = 0; i < 10; ++i) {
        HttpClient client("127.0.0.1", server.port());
        HttpReply reply = client.request("POST", "/up", std::string(6000, 'x'));
        if (reply.status == 200 && reply.body == "6000") {
          ++accepted;
        } else if (reply.status == 413) {
          ++refused;
        } else {
          ++other;
        }
      }
    });
  }
  for (auto& client : clients) client.join();
  EXPECT_GT(accepted, 0);
  EXPECT_EQ(accepted + refused, 60);
  EXPECT_EQ(other, 0);
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
}

}  // namespace
