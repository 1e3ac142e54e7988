#include <gtest/gtest.h>

#include "kelo/handlers/http/presets/GetPresetLayout.h"
#include "support/HandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetPresetLayoutTest : public HandlerTest<GetPresetLayout> {};

TEST_F(GetPresetLayoutTest, TheLayoutTextIsTheBodyAsItStands) {
  const std::string layout = R"({"sections": [ {"name":"rds"} ]})";
  host.answer("/presets/layout", Resource(ResourceValue(layout)));
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/presets/layout", "", "", "s1");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Read);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), layout);
}

}  // namespace
}  // namespace halvor::kelo::test
