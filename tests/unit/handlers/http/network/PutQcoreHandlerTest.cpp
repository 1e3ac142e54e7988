#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/network/PutQcoreHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValueType;

class PutQcoreHandlerTest : public test::HandlerTest<PutQcoreHandler> {};

TEST_F(PutQcoreHandlerTest, SendsEveryKeyInOneCommandTheReadOnlyLookingOnesToo) {
  host.answer(CCRUD::Command, "/qCore/setip", Resource());
  const web::HttpResponsePtr resp =
      call(host, web::Put, "/1/api/qcore_settings", "",
           R"({"dns1":"1.1.1.1","dgateway":"10.0.0.1","lan1mac":"aa","lan1up":true,)"
           R"("lan1connected":true,"lan2connected":"false"})",
           "s1");
  const Resource& sent = host.onlyAction().resource;
  EXPECT_EQ(host.onlyAction().path, "/qCore/setip");
  EXPECT_EQ(sent.values.size(), 15u);
  EXPECT_EQ(sent.values.at("dgateway").getStringValue(), "10.0.0.1");
  EXPECT_EQ(sent.values.at("lan1mac").getStringValue(), "aa");
  EXPECT_TRUE(sent.values.at("lan1up").getBoolValue());
  EXPECT_FALSE(sent.values.at("lan2up").getBoolValue());
  // The connection states go back in the form the client gave them.
  EXPECT_TRUE(sent.values.at("lan1connected").getBoolValue());
  EXPECT_EQ(sent.values.at("lan2connected").getStringValue(), "false");
  EXPECT_EQ(sent.values.at("lan2ip").getStringValue(), "");
  EXPECT_EQ(resp->statusCode(), 200);
}

TEST_F(PutQcoreHandlerTest, AnAbsentConnectionStateIsSentAsEmptyText) {
  host.answer(CCRUD::Command, "/qCore/setip", Resource());
  call(host, web::Put, "/1/api/qcore_settings", "", "{}", "s1");
  const Resource& sent = host.onlyAction().resource;
  EXPECT_EQ(sent.values.at("lan1connected").getType(), ResourceValueType::STRING);
  EXPECT_EQ(sent.values.at("lan1connected").getStringValue(), "");
}

}  // namespace
}  // namespace halvor::kelo
