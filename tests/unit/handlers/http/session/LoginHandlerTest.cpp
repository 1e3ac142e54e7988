#include <gtest/gtest.h>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/session/LoginHandler.h"
#include "kelo/handlers/http/session/LoginThrottle.h"
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

constexpr const char* kBody = R"({"username":"ann","password":"pw"})";

class LoginHandlerTest : public test::HandlerTest<LoginHandler> {
 protected:
  LoginHandlerTest() {
    LoginThrottle::shared().clear();
    LoginThrottle::shared().setLimit(LoginThrottle::kDefaultFailuresPerMinute);
    UserResources::answerValidations(host);
    host.answer(CCRUD::Command, "/session/command/newSession",
                Resource("sessionId", ResourceValue(std::string("new-session"))));
    host.answer("/user/command/login", Resource());
    host.answer(CCRUD::Read, "/user/users/ann", UserResources::user("ann"));
  }
  ~LoginHandlerTest() override { LoginThrottle::shared().clear(); }

  web::HttpResponsePtr login(const std::string& body, const std::string& peer = "127.0.0.1") {
    auto req = test::makeRequest(web::Post, "/1/api/login", "", body);
    req->setPeerAddr(web::InetAddress(peer, 40000));
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.processHttpRequest(req, resp, &host, &info, "old-session");
    return resp;
  }

  void refuseLogins() {
    host.fail("/user/command/login",
              [] { throw tavelabi::AuthorizationFailure("Invalid username or password"); });
  }
};

TEST_F(LoginHandlerTest, MakesASessionUnderThePluginsOwnThenLogsItInAndShowsTheUser) {
  const auto resp = login(kBody);
  const auto actions = host.actions();
  EXPECT_EQ("/session/command/newSession", actions.at(0).path);
  EXPECT_EQ(FakePluginInfo::kSessionId, actions.at(0).sessionId);
  EXPECT_EQ("/user/command/login", actions.at(1).path);
  EXPECT_EQ("new-session", actions.at(1).sessionId);
  EXPECT_EQ("ann", actions.at(1).resource.values.at("username").getStringValue());
  EXPECT_EQ("pw", actions.at(1).resource.values.at("password").getStringValue());
  EXPECT_EQ("/user/users/ann", actions.at(2).path);
  EXPECT_EQ("new-session", actions.at(2).sessionId);
  EXPECT_EQ(0, UserResources::flagOf(actions.at(2)));
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_EQ(web::CT_APPLICATION_JSON, resp->contentType());
  EXPECT_NE(std::string::npos, resp->body().find(R"("username":"ann")"));
  EXPECT_EQ(std::string::npos, resp->body().find("clear-ann"));
}

TEST_F(LoginHandlerTest, TheCookieHoldsTheNewIdentifierWithABlankBeforePath) {
  EXPECT_EQ("new-session; Path=/", login(kBody)->getCookie("SessionID"));
}

TEST_F(LoginHandlerTest, BodyFailuresComeBeforeAnyHostCall) {
  EXPECT_THROW(login(""), RequestMissingFormData);
  EXPECT_THROW(login("{"), InvalidJson);
  try {
    login(R"({"password":"pw"})");
    FAIL() << "no exception";
  } catch (const RequestMissingQueryParameter& error) {
    EXPECT_STREQ("Request missing query parameter: username.", error.what());
  }
  try {
    login(R"({"username":"ann"})");
    FAIL() << "no exception";
  } catch (const RequestMissingQueryParameter& error) {
    EXPECT_STREQ("Request missing query parameter: password.", error.what());
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(LoginHandlerTest, AnEmptyPasswordThatIsSetPasses) {
  EXPECT_EQ(200, login(R"({"username":"ann","password":""})")->statusCode());
}

TEST_F(LoginHandlerTest, ARefusalPassesOnAndTheNewCookieStays) {
  refuseLogins();
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  auto req = test::makeRequest(web::Post, "/1/api/login", "", kBody);
  EXPECT_THROW(handler.processHttpRequest(req, resp, &host, &info, "old"),
               tavelabi::AuthorizationFailure);
  EXPECT_EQ("new-session; Path=/", resp->getCookie("SessionID"));
}

TEST_F(LoginHandlerTest, TooManyFailuresFromOneAddressAnswer429WithoutAHostCall) {
  refuseLogins();
  for (unsigned i = 0; i < LoginThrottle::kDefaultFailuresPerMinute; ++i) {
    EXPECT_THROW(login(kBody, "10.0.0.5"), tavelabi::AuthorizationFailure);
  }
  host.clearActions();
  const auto resp = login(kBody, "10.0.0.5");
  EXPECT_EQ(429, resp->statusCode());
  const int wait = std::stoi(resp->getHeader("Retry-After"));
  EXPECT_GT(wait, 0);
  EXPECT_LE(wait, 60);
  EXPECT_TRUE(host.actions().empty());
  // Another address is not held back.
  EXPECT_THROW(login(kBody, "10.0.0.6"), tavelabi::AuthorizationFailure);
}

TEST_F(LoginHandlerTest, SuccessfulLoginsDoNotCount) {
  for (unsigned i = 0; i < LoginThrottle::kDefaultFailuresPerMinute + 2; ++i) {
    EXPECT_EQ(200, login(kBody, "10.0.0.7")->statusCode());
  }
}

}  // namespace
}  // namespace halvor::kelo
