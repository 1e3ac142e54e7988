#include <gtest/gtest.h>

#include "kelo/handlers/http/session/AuthenticatedHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/users/UserResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::FakePluginInfo;
using test::UserResources;

class AuthenticatedHandlerTest : public test::HandlerTest<AuthenticatedHandler> {
 protected:
  AuthenticatedHandlerTest() {
    UserResources::answerValidations(host);
    host.answer(CCRUD::Read, "/user/users/ann", UserResources::user("ann"));
    host.answer("/user/users/kiosk", UserResources::user("kiosk"));
  }

  web::HttpResponsePtr check(const std::string& session) {
    auto req = test::makeRequest(web::Get, "/1/api/authenticated", "");
    req->addHeader("host", "wall.example:7000");
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.processHttpRequest(req, resp, &host, &info, session);
    return resp;
  }

  void deadSession(const std::string& session) {
    host.fail("/session/sessions/" + session, [session] {
      throw tavelabi::NonExistentSessionException("Session " + session + " does not exist");
    });
  }

  void allowAutoLogin() {
    host.answer(CCRUD::Command, "/session/command/newSession",
                Resource("sessionId", ResourceValue(std::string("auto-session"))));
    host.answer(CCRUD::Command, "/user/command/autoLogin",
                Resource("username", ResourceValue(std::string("kiosk"))));
  }
};

TEST_F(AuthenticatedHandlerTest, ALiveSessionGets200AndTheSameIdentifierBack) {
  host.answer("/session/sessions/s1", Resource("username", ResourceValue(std::string("ann"))));
  const auto resp = check("s1");
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_EQ(web::CT_APPLICATION_JSON, resp->contentType());
  EXPECT_EQ("s1; Path=/", resp->getCookie("SessionID"));
  EXPECT_NE(std::string::npos, resp->body().find(R"("username":"ann")"));
}

TEST_F(AuthenticatedHandlerTest, APollCountsAsNoActivityOnAnyRead) {
  host.answer("/session/sessions/s1", Resource("username", ResourceValue(std::string("ann"))));
  check("s1");
  for (const auto& action : host.actions()) {
    EXPECT_EQ(1, UserResources::flagOf(action)) << action.path;
    EXPECT_EQ("s1", action.sessionId);
  }
  EXPECT_EQ("/session/sessions/s1", host.actions().at(0).path);
  EXPECT_EQ("/user/users/ann", host.actions().at(1).path);
}

TEST_F(AuthenticatedHandlerTest, ADeadSessionWithAutoLoginGets201AndANewCookie) {
  deadSession("gone");
  allowAutoLogin();
  const auto resp = check("gone");
  EXPECT_EQ(201, resp->statusCode());
  EXPECT_EQ("auto-session; Path=/", resp->getCookie("SessionID"));
  EXPECT_EQ(web::CT_APPLICATION_JSON, resp->contentType());
  EXPECT_NE(std::string::npos, resp->body().find(R"("username":"kiosk")"));
  const auto newSession = host.actionsOn("/session/command/newSession").at(0);
  EXPECT_EQ(FakePluginInfo::kSessionId, newSession.sessionId);
  const auto autoLogin = host.actionsOn("/user/command/autoLogin").at(0);
  EXPECT_EQ("auto-session", autoLogin.sessionId);
  ASSERT_EQ(1u, autoLogin.resource.values.size());
  EXPECT_EQ("wall.example:7000", autoLogin.resource.values.at("host").getStringValue());
  const auto user = host.actionsOn("/user/users/kiosk").at(0);
  EXPECT_EQ("auto-session", user.sessionId);
  EXPECT_EQ(0, UserResources::flagOf(user));
}

TEST_F(AuthenticatedHandlerTest, AFailedAutoLoginGets440WithTheSessionFailuresText) {
  deadSession("gone");
  host.answer(CCRUD::Command, "/session/command/newSession",
              Resource("sessionId", ResourceValue(std::string("auto-session"))));
  host.fail("/user/command/autoLogin",
            [] { throw tavelabi::AuthorizationFailure("No auto login for host wall"); });
  const auto resp = check("gone");
  EXPECT_EQ(440, resp->statusCode());
  EXPECT_EQ(web::CT_TEXT_PLAIN, resp->contentType());
  EXPECT_TRUE(resp->ifCloseConnection());
  EXPECT_NE(std::string::npos, resp->body().find("Session gone does not exist"));
  EXPECT_EQ(std::string::npos, resp->body().find("No auto login"));
  EXPECT_EQ("", resp->getCookie("SessionID"));
}

TEST_F(AuthenticatedHandlerTest, AFailedNewSessionGets440Too) {
  deadSession("gone");
  host.fail("/session/command/newSession", [] { throw std::runtime_error("host busy"); });
  const auto resp = check("gone");
  EXPECT_EQ(440, resp->statusCode());
  EXPECT_NE(std::string::npos, resp->body().find("Session gone does not exist"));
  EXPECT_TRUE(host.actionsOn("/user/command/autoLogin").empty());
}

TEST_F(AuthenticatedHandlerTest, ASessionWithoutUsernameTakesTheAutoLoginPath) {
  host.answer("/session/sessions/s1", Resource());
  allowAutoLogin();
  EXPECT_EQ(201, check("s1")->statusCode());
}

TEST_F(AuthenticatedHandlerTest, AFailureToShowTheAutoLoggedInUserGoesToTheFrame) {
  deadSession("gone");
  allowAutoLogin();
  host.fail("/user/users/kiosk", [] { throw tavelabi::AuthorizationFailure("no"); });
  EXPECT_THROW(check("gone"), tavelabi::AuthorizationFailure);
}

TEST_F(AuthenticatedHandlerTest, ThroughTheFrameAFailedAutoLoginLeavesTheFramesCookie) {
  test::installHost(&host, &info);
  deadSession("gone");
  host.fail("/session/command/newSession", [] { throw std::runtime_error("host busy"); });
  auto req = test::makeRequest(web::Get, "/1/api/authenticated", "");
  req->addHeader("cookie", "SessionID=gone");
  const auto resp = test::throughFrame(handler, req);
  EXPECT_EQ(440, resp->statusCode());
  EXPECT_EQ("gone;Path=/", resp->getCookie("SessionID"));
}

}  // namespace
}  // namespace halvor::kelo
