#include <gtest/gtest.h>

#include "kelo/handlers/http/session/PostLogout.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;

class PostLogoutTest : public test::HandlerTest<PostLogout> {};

TEST_F(PostLogoutTest, LogsTheClientsSessionOutAndAnswers200WithoutABody) {
  host.answer(CCRUD::Command, "/user/command/logout", tavelabi::Resource("x", 1));
  const auto resp = call(host, web::Post, "/1/api/logout", "", "", "s1");
  EXPECT_EQ("s1", host.onlyAction().sessionId);
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_TRUE(resp->body().empty());
}

TEST_F(PostLogoutTest, ThroughTheFrameADeadSessionIs440AndTheCookieStaysAsItCame) {
  test::installHost(&host, &info);
  host.fail("/user/command/logout",
            [] { throw tavelabi::NonExistentSessionException("Session s1 does not exist"); });
  auto req = test::makeRequest(web::Post, "/1/api/logout", "");
  req->addHeader("cookie", "SessionID=s1");
  const auto resp = test::throughFrame(handler, req);
  EXPECT_EQ(440, resp->statusCode());
  EXPECT_EQ("s1;Path=/", resp->getCookie("SessionID"));
}

}  // namespace
}  // namespace halvor::kelo
