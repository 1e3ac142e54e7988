#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/remoteio/RemoteIOSiteControlReset.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;

class RemoteIOSiteControlResetTest : public test::HandlerTest<RemoteIOSiteControlReset> {};

TEST_F(RemoteIOSiteControlResetTest, SendsOneCommandAndAnswersJsonWithoutBody) {
  host.answer(CCRUD::Command, "/remoteio/siteControl/resetLatched", Resource());
  const web::HttpResponsePtr resp =
      call(host, web::Put, "/1/api/remote-io/siteControls/reset", "", R"({"guid":"sc1"})", "s1");
  EXPECT_EQ(host.onlyAction().path, "/remoteio/siteControl/resetLatched");
  EXPECT_EQ(host.onlyAction().resource.values.size(), 13u);
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_TRUE(resp->body().empty());
}

}  // namespace
}  // namespace halvor::kelo
