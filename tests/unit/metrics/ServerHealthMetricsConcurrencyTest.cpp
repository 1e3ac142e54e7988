#include <gtest/gtest.h>
#include <prometheus/text_serializer.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "kelo/metrics/ServerHealthMetrics.h"

namespace halvor::kelo {
namespace {

// I/O threads count while a scrape reads: every count arrives, and nothing races (TSan).
TEST(ServerHealthMetricsConcurrencyTest, CountsFromSeveralThreadsWhileScrapedArriveWhole) {
  ServerHealthMetrics metrics;
  const std::vector<std::string> routes = {"/a", "/b/{x}", "/c"};
  constexpr int kThreads = 4;
  constexpr int kPerThread = 5000;
  std::atomic<bool> done{false};
  std::thread scraper([&] {
    while (!done.load()) {
      const std::string text = prometheus::TextSerializer().Serialize(metrics.collect());
      ASSERT_FALSE(text.empty());
    }
  });
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kPerThread; ++i) {
        metrics.onResponse(routes[static_cast<std::size_t>(i) % routes.size()], web::Get,
                           i % 2 == 0 ? 200 : 500, std::chrono::microseconds(t + i % 7));
        if (i % 10 == 0) metrics.pushSent();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  done = true;
  scraper.join();

  double requests = 0;
  std::uint64_t observed = 0;
  for (const prometheus::MetricFamily& family : metrics.collect()) {
    for (const prometheus::ClientMetric& metric : family.metric) {
      if (family.name == "kelo_http_requests_total") requests += metric.counter.value;
      if (family.name == "kelo_http_request_duration_seconds") {
        observed += metric.histogram.sample_count;
      }
      if (family.name == "kelo_websocket_pushes_sent_total") {
        EXPECT_EQ(metric.counter.value, kThreads * kPerThread / 10);
      }
    }
  }
  EXPECT_EQ(requests, kThreads * kPerThread);
  EXPECT_EQ(observed, static_cast<std::uint64_t>(kThreads * kPerThread));
}

}  // namespace
}  // namespace halvor::kelo
