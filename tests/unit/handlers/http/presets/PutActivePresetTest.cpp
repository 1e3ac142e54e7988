#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "kelo/handlers/http/presets/PutActivePreset.h"
#include "support/DeferredHandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using namespace std::chrono_literals;

class PutActivePresetTest : public DeferredHandlerTest<PutActivePreset> {
 protected:
  web::HttpResponsePtr put(const std::string& body) {
    return callDeferred(&PutActivePreset::putActivePreset,
                        makeRequest(web::Put, "/1/api/presets/active", "", body));
  }
};

TEST_F(PutActivePresetTest, TheActivationIsAnsweredWithThePresetOnceTheHostIsDone) {
  host.script("/presets/active/change", {Resource("started", true), Resource("inProgress", true),
                                         completedPreset("5", "Day")});
  put(R"({"guid":"5"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(
      resp->body(),
      R"({"guid":"5","resources":{"presetName":{"values":{"value":{"stringValue":"Day","type":"STRING"}}}}})");
  const auto calls = host.calls();
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0].action.resource.values.at("guid").getStringValue(), "5");
}

TEST_F(PutActivePresetTest, AnEmptyObjectSendsAnEmptyGuid) {
  host.script("/presets/active/change", {Resource("started", true), completedPreset("1", "x")});
  put("{}");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(host.calls().at(0).action.resource.values.at("guid").getStringValue(), "");
}

TEST_F(PutActivePresetTest, ABodyThatIsNotJsonFailsOnTheRequestsThreadBeforeTheHost) {
  try {
    put("{guid");
    ADD_FAILURE();
  } catch (const tavelabi::BadlyFormedJsonStringException& error) {
    EXPECT_STREQ(error.what(), "invalid broadcast preset");
  }
  EXPECT_TRUE(host.calls().empty());
  EXPECT_EQ(answers.count(), 0u);
}

TEST_F(PutActivePresetTest, AnErrorWhilePollingIsA500WithTheHostsTextInTheDiagnostic) {
  Resource failure("errorOccurred", true);
  failure.values["errorMessage"] = ResourceValue("exciter B not ready");
  host.script("/presets/active/change", {Resource("started", true), failure});
  put(R"({"guid":"5"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_NE(resp->body().find("Unable to complete preset action: exciter B not ready"),
            std::string::npos)
      << resp->body();
}

TEST_F(PutActivePresetTest, ASessionThatEndsWhilePollingIs440AndARefusedRight403) {
  host.scriptSteps("/presets/active/change",
                   {[](const ResourceAction&) { return Resource("started", true); },
                    [](const ResourceAction&) -> Resource {
                      throw tavelabi::NonExistentSessionException("session s1 expired");
                    }});
  put(R"({"guid":"5"})");
  ASSERT_NE(answers.waitFor(1), nullptr);
  EXPECT_EQ(answers.waitFor(1)->statusCode(), 440);

  host.scriptSteps("/presets/active/change", {[](const ResourceAction&) -> Resource {
                     throw tavelabi::AuthorizationFailure("read-only");
                   }});
  put(R"({"guid":"5"})");
  ASSERT_NE(answers.waitFor(2), nullptr);
  EXPECT_EQ(answers.waitFor(2)->statusCode(), 403);
}

TEST_F(PutActivePresetTest, TwoActivationsRunAtOnceOnTwoBackgroundThreads) {
  // Each first call waits until both activations have reached the host: only two tasks that run
  // at the same time get past it.
  std::mutex mutex;
  std::condition_variable bothThere;
  int arrived = 0;
  bool together = true;
  host.scriptSteps("/presets/active/change", {[&](const ResourceAction& action) {
                     if (action.resource.values.count("checkProgress") != 0) {
                       return completedPreset(action.sessionId, "done");
                     }
                     std::unique_lock lock(mutex);
                     ++arrived;
                     bothThere.notify_all();
                     together =
                         together && bothThere.wait_for(lock, 5s, [&] { return arrived == 2; });
                     return Resource("started", true);
                   }});
  put(R"({"guid":"4"})");
  put(R"({"guid":"6"})");
  ASSERT_NE(answers.waitFor(2), nullptr);
  EXPECT_TRUE(together);
  EXPECT_EQ(answers.waitFor(1)->statusCode(), web::k200OK);
  EXPECT_EQ(answers.waitFor(2)->statusCode(), web::k200OK);
}

}  // namespace
}  // namespace halvor::kelo::test
