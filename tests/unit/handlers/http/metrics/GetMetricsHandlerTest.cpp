#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/metrics/GetMetricsHandler.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "support/SimHost.h"

namespace halvor::kelo {
namespace {

constexpr const char* kToken = "s3cret-token";

class GetMetricsHandlerTest : public ::testing::Test {
 protected:
  GetMetricsHandlerTest() {
    sim.tavel.openSession("admin", test::FakePluginInfo::kSessionId);
    plugin.tavel = &sim.tavel;
    plugin.pluginInfo = &info;
    plugin.metricsToken = kToken;
    plugin.pluginStatus = [] { return tavelabi::PluginStatus(tavelabi::PluginStatus::Ok, "OK"); };
  }

  web::HttpResponsePtr scrape(const std::string& authorization) {
    web::HttpRequestPtr req = test::makeRequest(web::Get, "/metrics", "");
    if (!authorization.empty()) req->addHeader("Authorization", authorization);
    return GetMetricsHandler::respond(req, plugin, health, application);
  }

  test::SimHost sim;
  test::FakePluginInfo info;
  WebKeloInterface plugin;
  ServerHealthMetrics health;
  web::HttpAppFramework application;
};

TEST_F(GetMetricsHandlerTest, AnswersNotFoundWhileNoTokenIsConfigured) {
  plugin.metricsToken.clear();
  const web::HttpResponsePtr resp = scrape("Bearer ");
  EXPECT_EQ(resp->statusCode(), 404);
  EXPECT_EQ(resp->body(), "Metrics are off: the configuration has no \"metrics-token\".\n");
}

TEST_F(GetMetricsHandlerTest, AnswersUnauthorizedWithABearerChallengeWithoutAToken) {
  const web::HttpResponsePtr resp = scrape("");
  EXPECT_EQ(resp->statusCode(), 401);
  EXPECT_EQ(resp->getHeader("WWW-Authenticate"), "Bearer realm=\"metrics\"");
  EXPECT_EQ(resp->body(), "A bearer token is required.\n");
}

TEST_F(GetMetricsHandlerTest, RefusesAWrongTokenAPrefixALongerOneAndAnotherScheme) {
  EXPECT_EQ(scrape("Bearer wrong")->statusCode(), 401);
  EXPECT_EQ(scrape("Bearer s3cret")->statusCode(), 401);
  EXPECT_EQ(scrape(std::string("Bearer ") + kToken + "x")->statusCode(), 401);
  EXPECT_EQ(scrape(std::string("Basic ") + kToken)->statusCode(), 401);
  EXPECT_EQ(scrape(std::string("Bearer  ") + kToken)->statusCode(), 401);
  EXPECT_EQ(scrape(kToken)->statusCode(), 401);
}

TEST_F(GetMetricsHandlerTest, TakesTheSchemeInAnyCase) {
  EXPECT_EQ(scrape(std::string("bearer ") + kToken)->statusCode(), 200);
  EXPECT_EQ(scrape(std::string("BEARER ") + kToken)->statusCode(), 200);
}

TEST_F(GetMetricsHandlerTest, AnswersTheExpositionOfTheDemoWithTheRightToken) {
  const std::string route = "/1/api/alarms";
  health.onResponse(route, web::Get, 200, std::chrono::milliseconds(3));
  const web::HttpResponsePtr resp = scrape(std::string("Bearer ") + kToken);
  ASSERT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(resp->getHeader("Content-Type"), "");  // set as the content type, not as a header
  const std::string& text = resp->body();
  EXPECT_NE(text.find("# TYPE kelo_meter_value gauge"), std::string::npos);
  EXPECT_NE(text.find("kelo_meter_value{collection=\"RF output\",device=\"amplifier\","
                      "group=\"Transmitter output\",meter=\"Forward power\","
                      "path=\"/meters/rf/output/forwardPower\",units=\"W\"} "),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("kelo_alarm_active{device=\"amplifier-2\""), std::string::npos) << text;
  EXPECT_NE(text.find("kelo_metrics_source_up{source=\"meters\"} 1"), std::string::npos);
  EXPECT_NE(text.find("kelo_metrics_source_up{source=\"alarms\"} 1"), std::string::npos);
  EXPECT_NE(text.find("kelo_plugin_status{status=\"Ok\"} 1"), std::string::npos);
  EXPECT_NE(text.find("kelo_build_info{name=\"Kelo\",version=\"0\"} 1"), std::string::npos);
  EXPECT_NE(text.find("kelo_http_connections_open 0"), std::string::npos);
  EXPECT_NE(text.find("kelo_http_requests_total{method=\"GET\",route=\"/1/api/alarms\","
                      "status=\"200\"} 1"),
            std::string::npos);
  EXPECT_NE(text.find("# TYPE kelo_http_request_duration_seconds histogram"), std::string::npos);
  EXPECT_NE(text.find("# TYPE process_cpu_seconds_total counter"), std::string::npos);
}

}  // namespace
}  // namespace halvor::kelo
