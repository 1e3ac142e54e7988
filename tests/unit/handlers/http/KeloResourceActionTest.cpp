#include <gtest/gtest.h>

#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {
namespace {

bool markedLocal(const tavelabi::ResourceAction& action) { return action.isLocalHost; }

web::HttpRequestPtr requestFrom(const std::string& ip) {
  auto req = web::HttpRequest::newHttpRequest();
  req->setPeerAddr(web::InetAddress(ip, 40000));
  return req;
}

// While the web server does not run, locality is the peer's loopback alone and the host is not
// asked (there is none here).
TEST(KeloResourceActionTest, WithoutARunningServerOnlyLoopbackIsLocal) {
  ASSERT_FALSE(web::app().isRunning());
  KeloResourceAction loopback(tavelabi::CCRUD::Read, "/a", nullptr, "s", requestFrom("127.0.0.1"));
  EXPECT_TRUE(markedLocal(loopback));
  EXPECT_EQ(loopback.path, "/a");
  EXPECT_EQ(loopback.sessionId, "s");
  EXPECT_EQ(loopback.action, tavelabi::CCRUD::Read);
  KeloResourceAction v6(tavelabi::CCRUD::Read, "/a", nullptr, "s", requestFrom("::1"));
  EXPECT_TRUE(markedLocal(v6));
  KeloResourceAction remote(tavelabi::CCRUD::Update, "/a",
                            tavelabi::Resource(tavelabi::ResourceValue(5)), nullptr, "s",
                            requestFrom("10.0.0.5"));
  EXPECT_FALSE(markedLocal(remote));
  EXPECT_EQ(remote.resource.values.at("value").getIntValue(), 5);
}

}  // namespace
}  // namespace halvor::kelo
