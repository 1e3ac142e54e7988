#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "kelo/handlers/http/presets/DeletePreset.h"
#include "support/DeferredHandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using namespace std::chrono_literals;

Resource failed(const std::string& text) {
  Resource answer("errorOccurred", ResourceValue(true));
  answer.values["errorMessage"] = ResourceValue(text);
  return answer;
}

class DeletePresetTest : public DeferredHandlerTest<DeletePreset> {
 protected:
  web::HttpResponsePtr remove(const std::string& presetId) {
    return callDeferred(&DeletePreset::deletePreset,
                        makeRequest(web::Delete, "/1/api/presets/" + presetId, ""), presetId);
  }
};

TEST_F(DeletePresetTest, ACompletedDeleteIs200WithNoBodyAfterPollsOneSecondApart) {
  host.script("/presets/delete", {Resource("started", true), Resource("inProgress", true),
                                  Resource("actionCompleted", true)});
  remove("6");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_TRUE(resp->body().empty());
  EXPECT_NE(resp->contentType(), web::CT_APPLICATION_JSON);
  const auto calls = host.calls();
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0].action.resource.values.at("guid").getStringValue(), "6");
  ASSERT_EQ(calls[1].action.resource.values.size(), 1u);
  EXPECT_TRUE(calls[1].action.resource.values.at("checkProgress").getBoolValue());
  // The first poll follows the first call at once, the next one a second later.
  EXPECT_LT(calls[1].at - calls[0].at, 500ms);
  EXPECT_GE(calls[2].at - calls[1].at, 990ms);
}

TEST_F(DeletePresetTest, AnErrorWhilePollingIs500WithTheHostsTextAsTheBody) {
  host.script("/presets/delete", {Resource("started", true), failed("preset is scheduled")});
  remove("6");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_EQ(resp->body(), "preset is scheduled");
}

// The client of this road gets no answer: the response is filled but the completion callback is
// never called, and no background task is started. Over the wire the server then closes the
// connection without a response (tests/wire/presets.py).
TEST_F(DeletePresetTest, AnErrorInTheFirstAnswerFillsTheResponseButNeverAnswers) {
  host.script("/presets/delete", {failed("preset 1 is on air")});
  const web::HttpResponsePtr resp = remove("1");
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_EQ(resp->body(), "preset 1 is on air");
  std::this_thread::sleep_for(1500ms);
  EXPECT_EQ(answers.count(), 0u);
  EXPECT_EQ(host.calls().size(), 1u);
}

TEST_F(DeletePresetTest, AFirstAnswerWithErrorButNoMessageFailsThroughTheFrame) {
  host.script("/presets/delete", {Resource("errorOccurred", true)});
  EXPECT_THROW(remove("1"), std::out_of_range);
  EXPECT_EQ(answers.count(), 0u);
}

}  // namespace
}  // namespace halvor::kelo::test
