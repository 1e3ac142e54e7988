#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/KeloResourceAction.h"
#include "support/KeloCalls.h"
#include "support/KeloTestRoutes.h"
#include "support/KeloTestServer.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using test::KeloAnswer;
using test::KeloTestServer;
using test::KeloTestServerOptions;
using test::markedLocal;

// The frame's routes of both forms, registered for these tests only, over HTTP and HTTPS.
class KeloFrameOverTheWire : public ::testing::TestWithParam<bool> {
 protected:
  explicit KeloFrameOverTheWire(std::vector<std::string> localhostIps = {"127.0.0.1"})
      : server([&] {
          KeloTestServerOptions options;
          options.registerRoutes = test::registerTestRoutes;
          options.localhostIps = std::move(localhostIps);
          options.fixtures = {R"({"resources": {"/test/alpha": {"value": {"string": "hello"}}}})"};
          return options;
        }()) {
    server.start();
  }

  std::uint16_t port() { return GetParam() ? server.httpsPort() : server.httpPort(); }

  KeloAnswer get(const std::string& target, const std::string& session = "") {
    std::vector<std::pair<std::string, std::string>> headers;
    if (!session.empty()) {
      headers.emplace_back("Cookie", "SessionID=" + session);
    }
    return test::callOnce(port(), GetParam(), "GET", target, headers);
  }

  KeloTestServer server;
};

TEST_P(KeloFrameOverTheWire, TheSessionCookieIsEchoedAndTheHandlerAnswers) {
  const std::string session = server.openSession("viewer");
  const KeloAnswer resp = get("/1/test/resources/alpha", session);
  EXPECT_EQ(resp.status, 200);
  EXPECT_EQ(resp.body, R"({"local":true,"value":"hello"})");
  EXPECT_EQ(resp.header("Content-Type").rfind("application/json", 0), 0u);
  ASSERT_EQ(resp.setCookies().size(), 1u);
  EXPECT_EQ(resp.setCookies()[0].rfind("SessionID=" + session + ";Path=/", 0), 0u)
      << resp.setCookies()[0];
  EXPECT_FALSE(resp.closedByServer);

  const KeloAnswer simple = get("/1/test/resource?path=%2Ftest%2Falpha", session);
  EXPECT_EQ(simple.status, 200);
  EXPECT_EQ(simple.body, R"({"local":true,"value":"hello"})");
}

TEST_P(KeloFrameOverTheWire, WithoutACookieTheSessionIsEmptyAndTheHostSays440) {
  const KeloAnswer resp = get("/1/test/resource?path=/test/alpha");
  EXPECT_EQ(resp.status, 440);
  EXPECT_EQ(resp.body, "");
  EXPECT_TRUE(resp.closedByServer);
  ASSERT_EQ(resp.setCookies().size(), 1u);
  EXPECT_EQ(resp.setCookies()[0].rfind("SessionID=;Path=/", 0), 0u) << resp.setCookies()[0];
}

TEST_P(KeloFrameOverTheWire, AnExpiredSessionIs440OnThePathParameterForm) {
  const KeloAnswer resp = get("/1/test/resources/alpha", "0123456789abcdef");
  EXPECT_EQ(resp.status, 440);
  EXPECT_EQ(resp.body, "");
  EXPECT_TRUE(resp.closedByServer);
}

TEST_P(KeloFrameOverTheWire, ARefusedRightIs403WithTheHandlersBody) {
  const std::string session = server.openSession("viewer");
  const KeloAnswer resp = test::callOnce(port(), GetParam(), "PUT", "/1/test/resources/alpha",
                                         {{"Cookie", "SessionID=" + session}}, "new");
  EXPECT_EQ(resp.status, 403);
  EXPECT_EQ(resp.body, "partial");
  EXPECT_TRUE(resp.closedByServer);
  const std::string admin = server.openSession("admin");
  const KeloAnswer allowed = test::callOnce(port(), GetParam(), "PUT", "/1/test/resources/alpha",
                                            {{"Cookie", "SessionID=" + admin}}, "new");
  EXPECT_EQ(allowed.status, 204);
  EXPECT_EQ(server.host().peek("/test/alpha")->values.at("value").getStringValue(), "new");
}

TEST_P(KeloFrameOverTheWire, AMissingQueryParameterIs500InPlainText) {
  const KeloAnswer resp = get("/1/test/resource", server.openSession("admin"));
  EXPECT_EQ(resp.status, 500);
  EXPECT_EQ(resp.header("Content-Type").rfind("text/plain", 0), 0u) << resp.header("Content-Type");
  EXPECT_NE(resp.body.find("Request missing query parameter: path."), std::string::npos)
      << resp.body;
  EXPECT_TRUE(resp.closedByServer);
}

TEST_P(KeloFrameOverTheWire, AMissingKeyIs500WithMapAt) {
  const KeloAnswer resp = get("/1/test/resource?fail=range", server.openSession("admin"));
  EXPECT_EQ(resp.status, 500);
  EXPECT_NE(resp.body.find("map::at"), std::string::npos) << resp.body;
}

TEST_P(KeloFrameOverTheWire, AHostFailureReachesTheClientAs500) {
  const KeloAnswer resp = get("/1/test/resources/nothing", server.openSession("admin"));
  EXPECT_EQ(resp.status, 500);
  EXPECT_NE(resp.body.find("No resource at /test/nothing"), std::string::npos) << resp.body;
}

TEST_P(KeloFrameOverTheWire, ALocalhostListWithoutValueFailsEveryAction) {
  ResourceAction broken(CCRUD::Create, "/px3/localhostIp", Resource(), nullptr, "");
  server.host().processInternalAction(broken);
  const KeloAnswer resp = get("/1/test/resources/alpha", server.openSession("admin"));
  EXPECT_EQ(resp.status, 500);
  EXPECT_NE(resp.body.find("map::at"), std::string::npos) << resp.body;
  auto req = web::HttpRequest::newHttpRequest();
  req->setPeerAddr(web::InetAddress("127.0.0.1", 1));
  EXPECT_THROW(KeloResourceAction(CCRUD::Read, "/a", &server.kelo(), "", req), std::out_of_range);
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, KeloFrameOverTheWire, ::testing::Values(false, true),
                         [](const auto& instance) { return instance.param ? "Https" : "Http"; });

class EmptyLocalhostList : public KeloFrameOverTheWire {
 protected:
  EmptyLocalhostList() : KeloFrameOverTheWire({}) {}
};

TEST_P(EmptyLocalhostList, LoopbackIsLocalEvenWithAnEmptyList) {
  const KeloAnswer resp = get("/1/test/resources/alpha", server.openSession("admin"));
  EXPECT_EQ(resp.status, 200);
  EXPECT_EQ(resp.body, R"({"local":true,"value":"hello"})");
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, EmptyLocalhostList, ::testing::Values(false, true),
                         [](const auto& instance) { return instance.param ? "Https" : "Http"; });

class ListedRemoteAddress : public KeloFrameOverTheWire {
 protected:
  ListedRemoteAddress() : KeloFrameOverTheWire({"10.20.30.40", "192.168.7.7"}) {}
};

TEST_P(ListedRemoteAddress, AListedRemotePeerIsLocalAndAnotherIsNot) {
  ASSERT_TRUE(web::app().isRunning());
  auto listed = web::HttpRequest::newHttpRequest();
  listed->setPeerAddr(web::InetAddress("192.168.7.7", 5555));
  EXPECT_TRUE(markedLocal(KeloResourceAction(CCRUD::Read, "/a", &server.kelo(), "", listed)));
  auto first = web::HttpRequest::newHttpRequest();
  first->setPeerAddr(web::InetAddress("10.20.30.40", 5555));
  EXPECT_TRUE(
      markedLocal(KeloResourceAction(CCRUD::Read, "/a", Resource(), &server.kelo(), "", first)));
  auto other = web::HttpRequest::newHttpRequest();
  other->setPeerAddr(web::InetAddress("10.20.30.41", 5555));
  EXPECT_FALSE(markedLocal(KeloResourceAction(CCRUD::Read, "/a", &server.kelo(), "", other)));
  // A real client on the loopback is local though its address is not in the list.
  const KeloAnswer resp = get("/1/test/resources/alpha", server.openSession("admin"));
  EXPECT_EQ(resp.body, R"({"local":true,"value":"hello"})");
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, ListedRemoteAddress, ::testing::Values(false, true),
                         [](const auto& instance) { return instance.param ? "Https" : "Http"; });

}  // namespace
}  // namespace halvor::kelo
