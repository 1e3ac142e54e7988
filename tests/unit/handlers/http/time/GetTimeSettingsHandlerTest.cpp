#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/time/GetTimeSettingsHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetTimeSettingsHandlerTest : public test::HandlerTest<GetTimeSettingsHandler> {};

TEST_F(GetTimeSettingsHandlerTest, ReadsNtpThenTheZoneAndAddsTheProcesssClock) {
  host.answer("/time/ntp", Resource(ResourceValue(true)));
  host.answer("/time/ntpServer", Resource(ResourceValue("pool.ntp.org")));
  host.answer("/time/ntpSynchronized", Resource(ResourceValue(true)));
  host.answer("/time/timezone", Resource(ResourceValue("UTC")));
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/time_settings", "", "", "s1");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 4u);
  EXPECT_EQ(actions[0].path, "/time/ntp");
  EXPECT_EQ(actions[2].path, "/time/ntpSynchronized");
  EXPECT_EQ(actions[3].path, "/time/timezone");
  EXPECT_EQ(resp->statusCode(), 200);
  const std::string body(resp->body());
  EXPECT_EQ(body.rfind(R"({"ntpSettings":{"ntpEnabled":true,"ntpServer":"pool.ntp.org",)"
                       R"("ntpSynchronized":true},"timezone":{"timezone":"UTC"},"dateAndTime":)",
                       0),
            0u)
      << body;
}

}  // namespace
}  // namespace halvor::kelo
