#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/network/GetQcoreHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetQcoreHandlerTest : public test::HandlerTest<GetQcoreHandler> {};

TEST_F(GetQcoreHandlerTest, FetchesFirstThenReadsEachResourceUnderItsCommandKey) {
  host.answer(CCRUD::Command, "/qCore/getip", Resource("ignored", ResourceValue(1)));
  host.otherwise(Resource(ResourceValue("x")));
  for (const char* flag : {"/network/qCore/lan1/up", "/network/qCore/lan2/up"}) {
    host.answer(flag, Resource(ResourceValue(true)));
  }
  host.answer("/network/qCore/lan1/connected", Resource(ResourceValue(true)));
  host.answer("/network/qCore/lan2/connected", Resource(ResourceValue(false)));
  host.answer("/network/qCore/gateway", Resource(ResourceValue("10.0.0.1")));
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/qcore_settings", "", "", "s1");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 16u);
  EXPECT_EQ(actions[0].path, "/qCore/getip");
  EXPECT_EQ(actions[0].action, CCRUD::Command);
  EXPECT_TRUE(actions[0].resource.values.empty());
  EXPECT_EQ(actions[3].path, "/network/qCore/gateway");
  EXPECT_EQ(actions[15].path, "/network/qCore/lan2/connected");
  EXPECT_EQ(resp->statusCode(), 200);
  const std::string body(resp->body());
  EXPECT_NE(body.find(R"("dgateway":"10.0.0.1")"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("lan1connected":true)"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("lan2connected":false)"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("lan2up":true)"), std::string::npos) << body;
}

TEST_F(GetQcoreHandlerTest, AConnectionStateThatIsNeitherBoolNorTextIsRefused) {
  host.otherwise(Resource(ResourceValue("x")));
  host.answer("/network/qCore/lan1/up", Resource(ResourceValue(true)));
  host.answer("/network/qCore/lan1/connected", Resource(ResourceValue(3)));
  EXPECT_ANY_THROW(call(host, web::Get, "/1/api/qcore_settings", "", "", "s1"));
}

}  // namespace
}  // namespace halvor::kelo
