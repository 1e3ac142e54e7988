#include <gtest/gtest.h>

#include "kelo/handlers/http/presets/PutPreset.h"
#include "support/DeferredHandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutPresetTest : public DeferredHandlerTest<PutPreset> {
 protected:
  web::HttpResponsePtr put(const std::string& body) {
    return callDeferred(&PutPreset::putPreset,
                        makeRequest(web::Put, "/1/api/presets/update", "", body));
  }
};

TEST_F(PutPresetTest, ThePresetGoesToTheHostAsGuidAndSectionMaps) {
  host.script("/presets/update", {Resource("started", true), completedPreset("4", "Sports")});
  put(R"({"guid":"4","resources":{"rds":{"values":{"ps":{"stringValue":"SPORT","type":"STRING"}}}}})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  const Resource first = host.calls().at(0).action.resource;
  EXPECT_EQ(first.values.at("guid").getStringValue(), "4");
  EXPECT_EQ(
      first.values.at("value").getMapValue().at("rds").getMapValue().at("ps").getStringValue(),
      "SPORT");
}

TEST_F(PutPresetTest, ABadBodyIsA500FromTheBackgroundTaskAndTheHostIsNotAsked) {
  for (const std::string body : {"not json", R"({"resources":{}})"}) {
    put(body);
  }
  ASSERT_NE(answers.waitFor(2), nullptr);
  for (std::size_t n = 1; n <= 2; ++n) {
    EXPECT_EQ(answers.waitFor(n)->statusCode(), web::k500InternalServerError);
    EXPECT_NE(answers.waitFor(n)->body().find("invalid broadcast preset"), std::string::npos);
  }
  EXPECT_TRUE(host.calls().empty());
}

}  // namespace
}  // namespace halvor::kelo::test
