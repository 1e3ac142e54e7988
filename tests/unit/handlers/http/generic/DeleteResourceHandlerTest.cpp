#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/generic/DeleteResourceHandler.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using test::makeRequest;
using test::SimHost;

class DeleteResourceHandlerTest : public test::HandlerTest<DeleteResourceHandler> {
 protected:
  DeleteResourceHandlerTest() { host.otherwise(tavelabi::Resource()); }

  web::HttpResponsePtr remove(tavelabi::ITavel& tavel, const std::string& query,
                              const std::string& sessionId = "s1") {
    return call(tavel, web::Delete, "/1/api/command", query, "", sessionId);
  }
};

TEST_F(DeleteResourceHandlerTest, DeletesAndAnswersOnlyTheStatus) {
  host.answer("/presets/old", tavelabi::Resource("value", "the removed resource"));
  const web::HttpResponsePtr resp = remove(host, "path=%2Fpresets%2Fold");

  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Delete);
  EXPECT_EQ(action.path, "/presets/old");
  EXPECT_TRUE(action.resource.values.empty());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_NONE);
  EXPECT_EQ(resp->body(), "");
}

TEST_F(DeleteResourceHandlerTest, BodyIsNotLookedAt) {
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  handler.processHttpRequest(makeRequest(web::Delete, "/1/api/command", "path=/x",
                                         R"({"values":{"a":{"type":"INT32","intValue":1}}})"),
                             resp, &host, &info, "s1");
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
}

TEST_F(DeleteResourceHandlerTest, MissingPathThrows) {
  EXPECT_THROW(remove(host, "x=/x"), RequestMissingQueryParameter);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(DeleteResourceHandlerTest, RemovesFromTheSimulatedHost) {
  SimHost sim;
  tavelabi::ResourceAction seed(CCRUD::Create, "/doomed", tavelabi::Resource("value", 1), &info,
                                "");
  sim.tavel.processInternalAction(seed);
  remove(sim.tavel, "path=%2Fdoomed", SimHost::kAdminSession);
  EXPECT_FALSE(sim.tavel.peek("/doomed").has_value());
}

TEST_F(DeleteResourceHandlerTest, ReadOnlyUserIsRefused) {
  SimHost sim;
  tavelabi::ResourceAction seed(CCRUD::Create, "/kept", tavelabi::Resource("value", 1), &info, "");
  sim.tavel.processInternalAction(seed);
  EXPECT_THROW(remove(sim.tavel, "path=/kept", SimHost::kViewerSession),
               tavelabi::AuthorizationFailure);
  EXPECT_TRUE(sim.tavel.peek("/kept").has_value());
}

}  // namespace
}  // namespace halvor::kelo
