#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <string>

#include "kelo/handlers/http/presets/PutActivePreset.h"
#include "support/DeferredHandlerTest.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceAction;

class PutActivePresetConcurrencyTest : public DeferredHandlerTest<PutActivePreset> {};

// Two activations at once, each on its own background thread with its own action: each is
// answered with the preset it asked for, and the polls of one never reach the other's action.
TEST_F(PutActivePresetConcurrencyTest, TwoActivationsAtOnceAreEachAnsweredWithTheirOwnPreset) {
  std::atomic<int> polls{0};
  host.scriptSteps("/presets/active/change", {[&](const ResourceAction& action) {
                     if (action.resource.values.count("checkProgress") == 0) {
                       return Resource("started", true);
                     }
                     // Each session's action completes on its third poll.
                     if (++polls % 3 != 0) return Resource("inProgress", true);
                     return completedPreset(action.sessionId, "on air");
                   }});
  for (const std::string guid : {"4", "6"}) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putActivePreset(
        makeRequest(web::Put, "/1/api/presets/active", "", R"({"guid":")" + guid + R"("})"), resp,
        &host, &info, "session-" + guid, answers.callback());
  }
  ASSERT_NE(answers.waitFor(2, std::chrono::seconds(20)), nullptr);
  std::set<std::string> answered;
  for (std::size_t n = 1; n <= 2; ++n) {
    EXPECT_EQ(answers.waitFor(n)->statusCode(), web::k200OK);
    answered.insert(answers.waitFor(n)->body());
  }
  EXPECT_EQ(answered.size(), 2u);
  for (const auto& call : host.calls()) {
    if (call.action.resource.values.count("guid") != 0) {
      EXPECT_EQ("session-" + call.action.resource.values.at("guid").getStringValue(),
                call.action.sessionId);
    }
  }
}

}  // namespace
}  // namespace halvor::kelo::test
