#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/handlers/http/network/PutNetworkHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;

class PutNetworkHandlerTest : public test::HandlerTest<PutNetworkHandler> {};

TEST_F(PutNetworkHandlerTest, WritesSixResourcesInOrderButNotTheReadOnlyOnes) {
  host.otherwise(Resource());
  const web::HttpResponsePtr resp = call(
      host, web::Put, "/1/api/network_settings", "",
      R"({"ipAddress":"10.0.0.9","dhcpEnabled":true,"macAddr":"x","runningStatus":"y"})", "s1");
  const auto actions = host.actions();
  const std::vector<std::string> expected{"/network/ipAddress",   "/network/subnetMask",
                                          "/network/dhcpEnabled", "/network/gateway",
                                          "/network/dns1",        "/network/dns2"};
  ASSERT_EQ(actions.size(), expected.size());
  for (std::size_t index = 0; index < expected.size(); ++index) {
    EXPECT_EQ(actions[index].path, expected[index]);
    EXPECT_EQ(actions[index].action, CCRUD::Update);
    EXPECT_EQ(actions[index].resource.values.size(), 1u);
  }
  EXPECT_EQ(actions[0].resource.values.at("set_value").getStringValue(), "10.0.0.9");
  EXPECT_TRUE(actions[2].resource.values.at("set_value").getBoolValue());
  // A field that the body lacks goes as its default.
  EXPECT_EQ(actions[1].resource.values.at("set_value").getStringValue(), "");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_TRUE(resp->body().empty());
}

TEST_F(PutNetworkHandlerTest, AFailureLeavesTheEarlierWritesInPlace) {
  host.otherwise(Resource());
  host.fail("/network/gateway", [] { throw std::runtime_error("refused"); });
  EXPECT_THROW(call(host, web::Put, "/1/api/network_settings", "", "not json", "s1"),
               std::runtime_error);
  EXPECT_EQ(host.actions().size(), 4u);
  EXPECT_EQ(host.actions()[0].resource.values.at("set_value").getStringValue(), "");
}

}  // namespace
}  // namespace halvor::kelo
