#include <gtest/gtest.h>
#include <prometheus/text_serializer.h>

#include <chrono>
#include <string>

#include "kelo/metrics/ServerHealthMetrics.h"

namespace halvor::kelo {
namespace {

std::string textOf(const ServerHealthMetrics& metrics) {
  return prometheus::TextSerializer().Serialize(metrics.collect());
}

bool holds(const std::string& text, const std::string& line) {
  return text.find(line + "\n") != std::string::npos;
}

TEST(ServerHealthMetricsTest, CountsRequestsByRouteTemplateMethodAndStatus) {
  ServerHealthMetrics metrics;
  const std::string alarms = "/1/api/alarms";
  const std::string device = "/1/api/devices/{deviceGUID}";
  metrics.onResponse(alarms, web::Get, 200, std::chrono::milliseconds(1));
  metrics.onResponse(alarms, web::Get, 200, std::chrono::milliseconds(2));
  metrics.onResponse(alarms, web::Get, 440, std::chrono::milliseconds(2));
  metrics.onResponse(device, web::Get, 200, std::chrono::milliseconds(2));
  const std::string text = textOf(metrics);
  EXPECT_TRUE(
      holds(text, R"(kelo_http_requests_total{method="GET",route="/1/api/alarms",status="200"} 2)"))
      << text;
  EXPECT_TRUE(
      holds(text, R"(kelo_http_requests_total{method="GET",route="/1/api/alarms",status="440"} 1)"))
      << text;
  EXPECT_TRUE(holds(
      text,
      R"(kelo_http_requests_total{method="GET",route="/1/api/devices/{deviceGUID}",status="200"} 1)"))
      << text;
  EXPECT_TRUE(holds(text, R"(kelo_http_request_duration_seconds_count{route="/1/api/alarms"} 3)"))
      << text;
  EXPECT_TRUE(holds(text, R"(kelo_http_request_duration_seconds_sum{route="/1/api/alarms"} 0.005)"))
      << text;
  EXPECT_TRUE(holds(
      text, R"(kelo_http_request_duration_seconds_bucket{route="/1/api/alarms",le="0.001"} 1)"))
      << text;
}

TEST(ServerHealthMetricsTest, ResponsesOfNoRouteAreCountedUnderTheRouteNone) {
  ServerHealthMetrics metrics;
  metrics.onResponse("", web::Get, 404, std::chrono::milliseconds(0));
  const std::string text = textOf(metrics);
  EXPECT_TRUE(holds(text, R"(kelo_http_requests_total{method="GET",route="none",status="404"} 1)"))
      << text;
}

TEST(ServerHealthMetricsTest, ARouteTextAtAnAddressUsedBeforeIsCountedUnderItsOwnText) {
  ServerHealthMetrics metrics;
  std::string route = "/first";
  metrics.onResponse(route, web::Get, 200, std::chrono::milliseconds(0));
  route = "/second";  // same object, same address, another text
  metrics.onResponse(route, web::Get, 200, std::chrono::milliseconds(0));
  const std::string text = textOf(metrics);
  EXPECT_TRUE(
      holds(text, R"(kelo_http_requests_total{method="GET",route="/first",status="200"} 1)"))
      << text;
  EXPECT_TRUE(
      holds(text, R"(kelo_http_requests_total{method="GET",route="/second",status="200"} 1)"))
      << text;
}

TEST(ServerHealthMetricsTest, TwoObjectsOnOneThreadCountApart) {
  ServerHealthMetrics first;
  ServerHealthMetrics second;
  const std::string route = "/r";
  first.onResponse(route, web::Get, 200, std::chrono::milliseconds(0));
  second.onResponse(route, web::Get, 200, std::chrono::milliseconds(0));
  first.onResponse(route, web::Get, 200, std::chrono::milliseconds(0));
  EXPECT_TRUE(
      holds(textOf(first), R"(kelo_http_requests_total{method="GET",route="/r",status="200"} 2)"));
  EXPECT_TRUE(
      holds(textOf(second), R"(kelo_http_requests_total{method="GET",route="/r",status="200"} 1)"));
}

TEST(ServerHealthMetricsTest, CountsPushesSentAndSkippedFromZero) {
  ServerHealthMetrics metrics;
  EXPECT_TRUE(holds(textOf(metrics), "kelo_websocket_pushes_sent_total 0"));
  metrics.pushSent();
  metrics.pushSent();
  metrics.pushSkipped();
  const std::string text = textOf(metrics);
  EXPECT_TRUE(holds(text, "kelo_websocket_pushes_sent_total 2")) << text;
  EXPECT_TRUE(holds(text, "kelo_websocket_pushes_skipped_total 1")) << text;
  EXPECT_TRUE(holds(text, "# TYPE kelo_websocket_pushes_sent_total counter")) << text;
}

TEST(ServerHealthMetricsTest, TheProcessWideObjectIsAlwaysTheSame) {
  EXPECT_EQ(ServerHealthMetrics::instance().get(), ServerHealthMetrics::instance().get());
}

}  // namespace
}  // namespace halvor::kelo
