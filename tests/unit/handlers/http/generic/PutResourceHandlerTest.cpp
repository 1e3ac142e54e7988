#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/generic/PutResourceHandler.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using test::makeRequest;
using test::parseBody;
using test::SimHost;

class PutResourceHandlerTest : public test::HandlerTest<PutResourceHandler> {
 protected:
  PutResourceHandlerTest() { host.otherwise(tavelabi::Resource()); }

  web::HttpResponsePtr put(tavelabi::ITavel& tavel, const std::string& query,
                           const std::string& body, const std::string& sessionId = "s1") {
    return call(tavel, web::Put, "/1/api/resource", query, body, sessionId);
  }
};

TEST_F(PutResourceHandlerTest, UpdatesWithTheBodysResourceAndAnswersJson) {
  host.answer("/snmp/trapSettings", tavelabi::Resource("value", true));
  const web::HttpResponsePtr resp =
      put(host, "path=%2Fsnmp%2FtrapSettings",
          R"({"values":{"set_value":{"type":"BOOL","boolValue":true}}})");

  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Update);
  EXPECT_EQ(action.path, "/snmp/trapSettings");
  EXPECT_TRUE(action.resource.values.at("set_value").getBoolValue());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"values":{"value":{"boolValue":true,"type":"BOOL"}}})");
}

TEST_F(PutResourceHandlerTest, NotJsonRunsAnUpdateWithAnEmptyResource) {
  put(host, "path=/x", "not json");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Update);
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
}

TEST_F(PutResourceHandlerTest, StatusIsLeftAtTheResponsesDefault) {
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  resp->setStatusCode(202);  // not touched by the handler: it sets no status of its own
  handler.processHttpRequest(makeRequest(web::Put, "/1/api/resource", "path=/x", "{}"), resp, &host,
                             &info, "s1");
  EXPECT_EQ(resp->statusCode(), 202);
}

TEST_F(PutResourceHandlerTest, MissingPathThrows) {
  EXPECT_THROW(put(host, "", "{}"), RequestMissingQueryParameter);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PutResourceHandlerTest, MergesIntoTheSimulatedHostsResource) {
  SimHost sim;
  tavelabi::Resource stored("a", 1);
  stored.addValue("b", "old");
  tavelabi::ResourceAction seed(CCRUD::Create, "/merge/me", stored, &info, "");
  sim.tavel.processInternalAction(seed);

  const web::HttpResponsePtr resp =
      put(sim.tavel, "path=/merge/me", R"({"values":{"b":{"type":"STRING","stringValue":"new"}}})",
          SimHost::kAdminSession);
  const protobuf::Resource answer = parseBody(resp->body());
  EXPECT_EQ(answer.values().at("a").intvalue().value(), 1);
  EXPECT_EQ(answer.values().at("b").stringvalue().value(), "new");
}

TEST_F(PutResourceHandlerTest, ReadOnlyUserIsRefused) {
  SimHost sim;
  EXPECT_THROW(put(sim.tavel, "path=/merge/me", "{}", SimHost::kViewerSession),
               tavelabi::AuthorizationFailure);
}

TEST_F(PutResourceHandlerTest, UpdateOfAMissingPathIsTheHostsFailure) {
  SimHost sim;
  EXPECT_THROW(put(sim.tavel, "path=/nothing/here", "{}", SimHost::kAdminSession),
               tavelabi::NonExistentResourcePathException);
}

}  // namespace
}  // namespace halvor::kelo
