#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/time/PutNtpSettingsHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutNtpSettingsHandlerTest : public test::HandlerTest<PutNtpSettingsHandler> {};

TEST_F(PutNtpSettingsHandlerTest, ARefusedServerLeavesTheFirstWriteInPlaceAndAnswers500) {
  host.answer(CCRUD::Update, "/time/ntp", Resource());
  host.answer(CCRUD::Update, "/time/ntpServer",
              Resource("errorMessage", ResourceValue("Not a server name: a b")));
  const web::HttpResponsePtr resp = call(host, web::Put, "/1/api/time_settings/ntp", "",
                                         R"({"ntpEnabled":true,"ntpServer":"a b"})", "s1");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 2u);
  EXPECT_TRUE(actions[0].resource.values.at("set_value").getBoolValue());
  EXPECT_EQ(actions[1].resource.values.at("set_value").getStringValue(), "a b");
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(std::string(resp->body()), "Not a server name: a b");
}

TEST_F(PutNtpSettingsHandlerTest, ARefusedSwitchStopsBeforeTheServer) {
  host.answer(CCRUD::Update, "/time/ntp", Resource("errorMessage", ResourceValue("no")));
  const web::HttpResponsePtr resp =
      call(host, web::Put, "/1/api/time_settings/ntp", "", R"({"ntpServer":"x"})", "s1");
  EXPECT_EQ(host.onlyAction().path, "/time/ntp");
  EXPECT_EQ(resp->statusCode(), 500);
}

TEST_F(PutNtpSettingsHandlerTest, AnAcceptedWriteAnswersTheSettingsReadBack) {
  host.answer(CCRUD::Update, "/time/ntp", Resource());
  host.answer(CCRUD::Update, "/time/ntpServer", Resource());
  host.answer(CCRUD::Read, "/time/ntp", Resource(ResourceValue(false)));
  host.answer(CCRUD::Read, "/time/ntpServer", Resource(ResourceValue("ntp.example")));
  host.answer(CCRUD::Read, "/time/ntpSynchronized", Resource(ResourceValue(false)));
  const web::HttpResponsePtr resp =
      call(host, web::Put, "/1/api/time_settings/ntp", "", R"({"ntpServer":"ntp.example"})", "s1");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()),
            R"({"ntpEnabled":false,"ntpServer":"ntp.example","ntpSynchronized":false})");
}

}  // namespace
}  // namespace halvor::kelo
