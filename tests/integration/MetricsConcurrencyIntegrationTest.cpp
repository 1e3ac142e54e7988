#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "integration/WsIntegrationHelpers.h"
#include "support/MiniHttpClient.h"

namespace halvor::kelo::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kToken = "integration-metrics-token";

std::vector<std::pair<std::string, std::string>> bearer(const std::string& token) {
  return {{"Authorization", "Bearer " + token}};
}

// The value of the first sample line that starts with `prefix`, or -1.
double sampleOf(const std::string& text, const std::string& prefix) {
  const auto at = text.find("\n" + prefix);
  if (at == std::string::npos) return -1;
  const auto end = text.find('\n', at + 1);
  const std::string line = text.substr(at + 1, end - at - 1);
  return std::stod(line.substr(line.rfind(' ') + 1));
}

TEST(MetricsIntegrationTest, TheRouteServesTheDemoAndCountsTheServersOwnTraffic) {
  KeloTestServerOptions options;
  options.metricsToken = kToken;
  KeloTestServer server(options);
  server.start();
  const std::string session = server.openSession("admin");
  MiniHttpClient http(server.httpPort(), false);
  EXPECT_EQ(
      http.request("GET", "/1/api/alarms/active", {{"Cookie", "SessionID=" + session}}).status,
      200);
  EXPECT_EQ(http.request("GET", "/metrics").status, 401);
  const MiniResponse scrape = http.request("GET", "/metrics", bearer(kToken));
  ASSERT_EQ(scrape.status, 200);
  EXPECT_EQ(scrape.header("Content-Type"), "text/plain; version=0.0.4; charset=utf-8");
  const std::string& text = scrape.body;
  EXPECT_GT(sampleOf(text,
                     "kelo_meter_value{collection=\"RF output\",device=\"amplifier\","
                     "group=\"Transmitter output\",meter=\"Forward power\""),
            0);
  EXPECT_EQ(sampleOf(text,
                     "kelo_http_requests_total{method=\"GET\",route=\"/1/api/alarms/"
                     "active\",status=\"200\"}"),
            1);
  EXPECT_EQ(sampleOf(text,
                     "kelo_http_requests_total{method=\"GET\",route=\"/metrics\","
                     "status=\"401\"}"),
            1);
  EXPECT_EQ(sampleOf(text, "kelo_plugin_status{status=\"Ok\"}"), 1);
  EXPECT_EQ(sampleOf(text, "kelo_http_connections_open"), 1);
  EXPECT_EQ(sampleOf(text, "kelo_websocket_connections_open"), 0);
}

// Scrapes on two connections while the host pushes a changing resource to subscribers and the
// clients' requests are counted: every scrape is whole, every push arrives, and nothing races.
TEST(MetricsConcurrencyIntegrationTest, ScrapesWhilePushesAndRequestsAreCounted) {
  KeloTestServerOptions options;
  options.metricsToken = kToken;
  options.ioThreads = 2;
  KeloTestServer server(options);
  server.start();
  const std::string session = server.openSession("admin");
  hostWrite(server, tavelabi::CCRUD::Create, "/tx/a",
            tavelabi::Resource(tavelabi::ResourceValue(0)));
  auto heartbeat = startHeartbeat(server, session);
  auto subscriber = openWs(server, "/1/ws/resource?path=/tx/a", session);
  ASSERT_TRUE(subscriber->receive(5s));  // the first message
  ASSERT_TRUE(waitForSubscribers("/tx/a", 1));

  std::atomic<bool> stop{false};
  std::atomic<int> scrapes{0};
  std::atomic<int> broken{0};
  std::vector<std::thread> scrapers;
  for (int s = 0; s < 2; ++s) {
    scrapers.emplace_back([&] {
      MiniHttpClient http(server.httpPort(), false);
      while (!stop.load()) {
        const MiniResponse reply = http.request("GET", "/metrics", bearer(kToken));
        if (reply.status != 200 ||
            reply.body.find("kelo_websocket_clients{path=\"/tx/a\"} 1") == std::string::npos) {
          ++broken;
        }
        ++scrapes;
      }
    });
  }
  constexpr int kPushes = 40;
  int received = 0;
  for (int i = 1; i <= kPushes; ++i) {
    hostUpdate(server, "/tx/a", i);
    if (subscriber->receive(5s)) ++received;
  }
  stop = true;
  for (std::thread& scraper : scrapers) scraper.join();
  EXPECT_EQ(received, kPushes);
  EXPECT_GT(scrapes.load(), 0);
  EXPECT_EQ(broken.load(), 0);

  const MiniResponse last =
      MiniHttpClient::once(server.httpPort(), false, "GET", "/metrics", bearer(kToken));
  EXPECT_GE(sampleOf(last.body, "kelo_websocket_pushes_sent_total"), kPushes);
  EXPECT_EQ(sampleOf(last.body, "kelo_websocket_connections_open"), 2);
  EXPECT_EQ(sampleOf(last.body,
                     "kelo_http_requests_total{method=\"GET\",route=\"/metrics\","
                     "status=\"200\"}"),
            scrapes.load());
}

}  // namespace
}  // namespace halvor::kelo::test
