#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "kelo/handlers/http/network/GetNetworkHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetNetworkHandlerTest : public test::HandlerTest<GetNetworkHandler> {
 protected:
  void answerAll() {
    host.answer("/network/ipAddress", Resource(ResourceValue("10.1.1.2")));
    host.answer("/network/dns1", Resource(ResourceValue("10.1.1.1")));
    host.answer("/network/dns2", Resource(ResourceValue("")));
    host.answer("/network/subnetMask", Resource(ResourceValue("255.0.0.0")));
    host.answer("/network/dhcpEnabled", Resource(ResourceValue(false)));
    host.answer("/network/macAddr", Resource(ResourceValue("aa:bb")));
    host.answer("/network/gateway", Resource(ResourceValue("10.1.1.1")));
    host.answer("/network/runningStatus", Resource(ResourceValue("running")));
  }
};

TEST_F(GetNetworkHandlerTest, ReadsTheEightResourcesInOrder) {
  answerAll();
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/network_settings", "", "", "s1");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 8u);
  EXPECT_EQ(actions[0].path, "/network/ipAddress");
  EXPECT_EQ(actions[3].path, "/network/subnetMask");
  EXPECT_EQ(actions[4].path, "/network/dhcpEnabled");
  EXPECT_EQ(actions[7].path, "/network/runningStatus");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(
      std::string(resp->body()),
      R"({"ipAddress":"10.1.1.2","dns1":"10.1.1.1","dns2":"","subnetMask":"255.0.0.0",)"
      R"("dhcpEnabled":false,"macAddr":"aa:bb","gateway":"10.1.1.1","runningStatus":"running"})");
}

TEST_F(GetNetworkHandlerTest, AResourceWithoutValueFailsWithMapAt) {
  answerAll();
  host.answer("/network/gateway", Resource());
  EXPECT_THROW(call(host, web::Get, "/1/api/network_settings", "", "", "s1"), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
