#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/presets/GetActivePreset.h"
#include "support/HandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetActivePresetTest : public HandlerTest<GetActivePreset> {};

TEST_F(GetActivePresetTest, ThePresetOnAirIsReadAndAnswered) {
  Resource active("guid", ResourceValue("5"));
  active.values["value"] = ResourceValue(
      ResourceValue::Map{{"power", ResourceValue(ResourceValue::Map{{"value", 10}})}});
  host.answer("/presets/active/details", active);
  const web::HttpResponsePtr resp = callMember(
      &GetActivePreset::getActivePreset, makeRequest(web::Get, "/1/api/presets/active", ""), "s1");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Read);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(
      resp->body(),
      R"({"guid":"5","resources":{"power":{"values":{"value":{"intValue":10,"type":"INT32"}}}}})");
}

TEST_F(GetActivePresetTest, GuidAndValueAreBothRequired) {
  host.answer("/presets/active/details", Resource("guid", ResourceValue("5")));
  EXPECT_THROW(callMember(&GetActivePreset::getActivePreset,
                          makeRequest(web::Get, "/1/api/presets/active", ""), "s1"),
               std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo::test
