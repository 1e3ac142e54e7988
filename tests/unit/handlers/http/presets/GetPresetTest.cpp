#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "kelo/handlers/http/presets/GetPreset.h"
#include "support/DeferredHandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using namespace std::chrono_literals;

class GetPresetTest : public DeferredHandlerTest<GetPreset> {
 protected:
  web::HttpResponsePtr get(const std::string& presetId) {
    return callDeferred(&GetPreset::getPreset,
                        makeRequest(web::Get, "/1/api/presets/" + presetId, ""), presetId);
  }
};

TEST_F(GetPresetTest, ThePresetIsLoadedByItsGuidAndAnsweredOnceLoaded) {
  host.script("/presets/load", {Resource("started", true), completedPreset("12", "Jazz")});
  get("12");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(
      resp->body(),
      R"({"guid":"12","resources":{"presetName":{"values":{"value":{"stringValue":"Jazz","type":"STRING"}}}}})");
  const auto calls = host.calls();
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].action.resource.values.at("guid").getStringValue(), "12");
  EXPECT_EQ(calls[0].action.sessionId, "s1");
}

TEST_F(GetPresetTest, TheHandlerReturnsAtOnceWhileTheHostIsStillWorking) {
  // The host stays busy until the test lets it finish: the handler's thread is free meanwhile.
  std::atomic<bool> finish{false};
  host.scriptSteps("/presets/load", {[&](const ResourceAction& action) {
                     if (action.resource.values.count("checkProgress") == 0) {
                       return Resource("started", true);
                     }
                     if (!finish) return Resource("inProgress", true);
                     return completedPreset("3", "Night");
                   }});
  const auto start = std::chrono::steady_clock::now();
  get("3");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 200ms);
  ASSERT_TRUE(host.waitForCalls("/presets/load", 3));
  EXPECT_EQ(answers.count(), 0u);
  finish = true;
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.waitFor()->statusCode(), web::k200OK);
}

TEST_F(GetPresetTest, AnUnknownGuidIsThe500OfTheHostsError) {
  Resource failure("errorOccurred", true);
  failure.values["errorMessage"] = ResourceValue("No preset with guid 99");
  host.script("/presets/load", {failure});
  get("99");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_NE(resp->body().find("Unable to complete preset action: No preset with guid 99"),
            std::string::npos);
  EXPECT_EQ(host.calls().size(), 1u);
}

TEST_F(GetPresetTest, AHostFailureInTheMiddleOfTheWaitIsAnswered500) {
  host.scriptSteps("/presets/load",
                   {[](const ResourceAction&) { return Resource("started", true); },
                    [](const ResourceAction&) -> Resource {
                      throw std::runtime_error("hardware bus timeout");
                    }});
  get("3");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_NE(resp->body().find("hardware bus timeout"), std::string::npos);
}

}  // namespace
}  // namespace halvor::kelo::test
