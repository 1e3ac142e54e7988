#include <gtest/gtest.h>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/presets/PostPreset.h"
#include "support/DeferredHandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;

class PostPresetTest : public DeferredHandlerTest<PostPreset> {
 protected:
  web::HttpResponsePtr post(const std::string& query, const std::string& body = "") {
    return callDeferred(&PostPreset::postPreset,
                        makeRequest(web::Post, "/1/api/presets/clone", query, body));
  }
};

TEST_F(PostPresetTest, TheCloneIsAnsweredWithTheNewPreset) {
  host.script("/presets/create", {Resource("started", true), completedPreset("13", "Copy")});
  post("guid=3", "ignored body");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_NE(resp->body().find(R"("guid":"13")"), std::string::npos);
  const Resource first = host.calls().at(0).action.resource;
  ASSERT_EQ(first.values.size(), 1u);
  EXPECT_EQ(first.values.at("guid").getStringValue(), "3");
}

TEST_F(PostPresetTest, APercentEscapeInTheGuidReachesTheHostUndecoded) {
  host.script("/presets/create", {Resource("started", true), completedPreset("13", "Copy")});
  post("guid=%33%20a");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(host.calls().at(0).action.resource.values.at("guid").getStringValue(), "%33%20a");
}

TEST_F(PostPresetTest, WithoutGuidTheRequestFailsOnItsOwnThreadBeforeTheHost) {
  try {
    post("other=1");
    ADD_FAILURE();
  } catch (const RequestMissingQueryParameter& error) {
    EXPECT_STREQ(error.what(), "Request missing query parameter: guid.");
  }
  EXPECT_TRUE(host.calls().empty());
  EXPECT_EQ(answers.count(), 0u);
}

}  // namespace
}  // namespace halvor::kelo::test
