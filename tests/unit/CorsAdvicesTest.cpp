#include <gtest/gtest.h>

#include "kelo/CorsAdvices.h"

namespace halvor::kelo {
namespace {

struct AdviceOutcome {
  web::HttpResponsePtr answered;
  bool chained = false;
};

AdviceOutcome runPreRouting(web::HttpMethod method) {
  auto req = web::HttpRequest::newHttpRequest();
  req->setMethod(method);
  req->setPath("/no/such/route");
  AdviceOutcome outcome;
  CorsAdvices::preRoutingAdvice(
      req, [&outcome](const web::HttpResponsePtr& resp) { outcome.answered = resp; },
      [&outcome] { outcome.chained = true; });
  return outcome;
}

std::size_t countFields(const web::HttpResponse& resp, const std::string& name) {
  std::size_t count = 0;
  for (const auto& [key, value] : resp.headers()) {
    count += key == name ? 1 : 0;
  }
  return count;
}

TEST(CorsAdvicesTest, RequestsOtherThanOptionsGoOn) {
  for (web::HttpMethod method : {web::Get, web::Post, web::Put, web::Delete}) {
    const AdviceOutcome outcome = runPreRouting(method);
    EXPECT_TRUE(outcome.chained);
    EXPECT_EQ(outcome.answered, nullptr);
  }
}

TEST(CorsAdvicesTest, OptionsIsAnsweredAtOnceWithTheFourHeaders) {
  const AdviceOutcome outcome = runPreRouting(web::Options);
  EXPECT_FALSE(outcome.chained);
  ASSERT_NE(outcome.answered, nullptr);
  const web::HttpResponse& resp = *outcome.answered;
  EXPECT_EQ(resp.statusCode(), 200);
  EXPECT_EQ(resp.contentType(), web::CT_TEXT_PLAIN);
  EXPECT_EQ(resp.body(), "");
  EXPECT_EQ(resp.getHeader("Allow"), "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  EXPECT_EQ(resp.getHeader("Access-Control-Allow-Methods"),
            "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  EXPECT_EQ(resp.getHeader("Access-Control-Allow-Headers"), "Content-Type, Accept, x-csrftoken");
  EXPECT_EQ(resp.getHeader("Access-Control-Allow-Credentials"), "true");
  EXPECT_EQ(countFields(resp, "Access-Control-Allow-Origin"), 0u);
}

TEST(CorsAdvicesTest, WithoutBypassTheCreationAdviceAddsNothing) {
  auto resp = std::make_shared<web::HttpResponse>();
  CorsAdvices::responseCreationAdvice(false, "http://elsewhere")(resp);
  EXPECT_TRUE(resp->headers().empty());
}

TEST(CorsAdvicesTest, BypassWithAnEmptyOriginSendsTheHeaderEmpty) {
  auto resp = std::make_shared<web::HttpResponse>();
  CorsAdvices::responseCreationAdvice(true, "")(resp);
  ASSERT_EQ(countFields(*resp, "Access-Control-Allow-Origin"), 1u);
  EXPECT_EQ(resp->getHeader("Access-Control-Allow-Origin"), "");
  EXPECT_EQ(resp->getHeader("Access-Control-Allow-Credentials"), "true");
}

TEST(CorsAdvicesTest, BypassNamesTheConfiguredOrigin) {
  auto resp = std::make_shared<web::HttpResponse>();
  CorsAdvices::responseCreationAdvice(true, "http://front.example")(resp);
  EXPECT_EQ(resp->getHeader("Access-Control-Allow-Origin"), "http://front.example");
}

TEST(CorsAdvicesTest, BothAdvicesOnOneResponseLeaveOneCredentialsField) {
  auto resp = std::make_shared<web::HttpResponse>();
  CorsAdvices::responseCreationAdvice(true, "http://front.example")(resp);
  resp->removeHeader("Access-Control-Allow-Origin");
  auto advice = CorsAdvices::responseCreationAdvice(true, "http://front.example");
  advice(resp);
  advice(resp);
  EXPECT_EQ(countFields(*resp, "Access-Control-Allow-Credentials"), 1u);
  EXPECT_EQ(countFields(*resp, "Access-Control-Allow-Origin"), 1u);
}

}  // namespace
}  // namespace halvor::kelo
