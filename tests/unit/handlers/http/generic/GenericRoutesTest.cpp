#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kelo/handlers/http/generic/CommandHandler.h"
#include "kelo/handlers/http/generic/DeleteResourceHandler.h"
#include "kelo/handlers/http/generic/GenericRoutes.h"
#include "kelo/handlers/http/generic/GetResourceHandler.h"
#include "kelo/handlers/http/generic/PostResourceHandler.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using test::FakePluginInfo;
using test::installHost;
using test::makeRequest;
using test::RecordingHost;
using test::throughFrame;
using HandlerInfo = web::HttpAppFramework::HandlerInfo;

// ---- registration ----

TEST(GenericRoutesTest, RegistersFiveRoutesUnderTheVersionPrefix) {
  web::HttpAppFramework application;
  GenericRoutes::registerGenericRoutes(application);
  const std::vector<HandlerInfo> expected = {
      {"/1/api/resource", web::Get, "GetResourceHandler"},
      {"/1/api/resource", web::Post, "PostResourceHandler"},
      {"/1/api/resource", web::Put, "PutResourceHandler"},
      {"/1/api/command", web::Put, "CommandHandler"},
      {"/1/api/command", web::Delete, "DeleteResourceHandler"},
  };
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

TEST(GenericRoutesTest, NoRouteDeletesUnderTheResourceUrl) {
  web::HttpAppFramework application;
  GenericRoutes::registerGenericRoutes(application);
  for (const HandlerInfo& route : application.getHandlersInfo()) {
    EXPECT_FALSE(std::get<0>(route) == "/1/api/resource" && std::get<1>(route) == web::Delete);
    EXPECT_NE(std::get<1>(route), web::Invalid) << std::get<0>(route) << " admits any method";
  }
}

// ---- through the frame ----

class GenericFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host.otherwise(tavelabi::Resource());
    installHost(&host, &info);
  }

  RecordingHost host;
  FakePluginInfo info;
};

TEST_F(GenericFrameTest, MissingPathIs500WithPlainTextThatNamesIt) {
  GetResourceHandler handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Get, "/1/api/resource", ""));
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(resp->body().find("Request missing query parameter: path."), std::string::npos)
      << resp->body();
  EXPECT_TRUE(resp->ifCloseConnection());
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GenericFrameTest, DeadSessionIs440WithEmptyBodyAndClosedConnection) {
  host.fail("/x",
            [] { throw tavelabi::NonExistentSessionException("Session gone does not exist"); });
  PostResourceHandler handler;
  web::HttpRequestPtr req = makeRequest(web::Post, "/1/api/resource", "path=/x", "{}");
  req->addHeader("Cookie", "SessionID=gone");
  const web::HttpResponsePtr resp = throughFrame(handler, req);
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_EQ(resp->body(), "");
  EXPECT_TRUE(resp->ifCloseConnection());
  EXPECT_EQ(host.onlyAction().sessionId, "gone");
}

TEST_F(GenericFrameTest, RefusedRightIs403WithClosedConnection) {
  host.fail("/x", [] { throw tavelabi::AuthorizationFailure("User viewer may not Delete /x"); });
  DeleteResourceHandler handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Delete, "/1/api/command", "path=/x"));
  EXPECT_EQ(resp->statusCode(), 403);
  EXPECT_EQ(resp->body(), "");
  EXPECT_TRUE(resp->ifCloseConnection());
}

TEST_F(GenericFrameTest, MissingResourceIs500WithTheHostsText) {
  host.fail("/x", [] { throw tavelabi::NonExistentResourcePathException("No resource at /x"); });
  CommandHandler handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Put, "/1/api/command", "path=/x", "{}"));
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(resp->body().find("No resource at /x"), std::string::npos) << resp->body();
}

TEST_F(GenericFrameTest, SessionCookieIsEchoedWithItsPath) {
  GetResourceHandler handler;
  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/resource", "path=/x");
  req->addHeader("Cookie", "SessionID=abc123");
  const web::HttpResponsePtr resp = throughFrame(handler, req);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->getCookie("SessionID"), "abc123;Path=/");
  EXPECT_EQ(host.onlyAction().sessionId, "abc123");
}

TEST_F(GenericFrameTest, WithoutCookieTheHostGetsAnEmptySessionAndTheCookieIsStillSet) {
  GetResourceHandler handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Get, "/1/api/resource", "path=/x"));
  EXPECT_EQ(resp->getCookie("SessionID"), ";Path=/");
  EXPECT_EQ(host.onlyAction().sessionId, "");
}

}  // namespace
}  // namespace halvor::kelo
