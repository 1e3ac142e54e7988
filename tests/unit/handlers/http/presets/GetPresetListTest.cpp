#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/presets/GetPresetList.h"
#include "support/HandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

ResourceValue entry(const std::string& guid, ResourceValue::Map sections) {
  return ResourceValue(ResourceValue::Map{{"guid", guid}, {"value", ResourceValue(sections)}});
}

Resource listOf(ResourceValue::List entries) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(entries);
  return Resource(list);
}

class GetPresetListTest : public HandlerTest<GetPresetList> {};

TEST_F(GetPresetListTest, ThePresetsComeInTheHostsOrderWithTheirSections) {
  host.answer("/presets/generateList",
              listOf({entry("9", {{"mode", ResourceValue(ResourceValue::Map{{"value", "HD"}})}}),
                      entry("2", {})}));
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/presets", "", "", "s1");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Command);
  EXPECT_EQ(host.onlyAction().path, "/presets/generateList");
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"presets":[{"guid":"9","resources":{"mode":{"values":{"value":)"
                          R"({"stringValue":"HD","type":"STRING"}}}}},{"guid":"2"}]})");
}

TEST_F(GetPresetListTest, AnEmptyListIsAnEmptyMessage) {
  host.answer("/presets/generateList", listOf({}));
  EXPECT_EQ(call(host, web::Get, "/1/api/presets", "", "", "s1")->body(), "{}");
}

TEST_F(GetPresetListTest, AnElementWithoutGuidOrValueFails) {
  host.answer(
      "/presets/generateList",
      listOf({ResourceValue(ResourceValue::Map{{"value", ResourceValue(ResourceValue::Map{})}})}));
  EXPECT_THROW(call(host, web::Get, "/1/api/presets", "", "", "s1"), std::out_of_range);
  host.answer("/presets/generateList", listOf({ResourceValue(ResourceValue::Map{{"guid", "1"}})}));
  EXPECT_THROW(call(host, web::Get, "/1/api/presets", "", "", "s1"), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo::test
