#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/versions/GetSkyrunVersionHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetSkyrunVersionHandlerTest : public test::HandlerTest<GetSkyrunVersionHandler> {};

TEST_F(GetSkyrunVersionHandlerTest, ReadsTheThreeVersionsInOrder) {
  host.answer("/skyrun/versions/qcore", Resource(ResourceValue("1")));
  host.answer("/skyrun/versions/sdpdriver", Resource(ResourceValue("2")));
  host.answer("/skyrun/versions/proxmox", Resource(ResourceValue("3")));
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/skyrun_versions", "", "", "s1");
  ASSERT_EQ(host.actions().size(), 3u);
  EXPECT_EQ(host.actions()[1].path, "/skyrun/versions/sdpdriver");
  EXPECT_EQ(std::string(resp->body()), R"({"qcore":"1","sdpdriver":"2","proxmox":"3"})");
}

}  // namespace
}  // namespace halvor::kelo
