#include <gtest/gtest.h>

#include <string>

#include "OrbanTestSupport.h"
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/orban/PostOrbanPreset.h"
#include "support/DeferredHandlerTest.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using namespace std::chrono_literals;
using tavelabi::CCRUD;
using tavelabi::Resource;

class PostOrbanPresetTest : public ::testing::Test {
 protected:
  PostOrbanPresetTest() {
    startedBackgroundQueue();
    host.answer("/orban/preset/save", Resource());
  }

  void post(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.postOrbanPreset(makeRequest(web::Post, "/1/api/orban/preset", "", body), resp, &host,
                            &info, "s1", answers.callback());
  }

  ScriptedReadsHost host;
  FakePluginInfo info;
  PostOrbanPreset handler{shortWaits()};
  Answers answers;
};

TEST_F(PostOrbanPresetTest, ThePresetIsSavedAndAnsweredOnceTheHostListsItsName) {
  host.scriptReads("/orban/presetList", [](int read) {
    return read < 4 ? presetList({"Balanced"}) : presetList({"Balanced", "Drive"});
  });
  post(R"({"name":"Drive","isMultiband":true,"isLowLatency":false})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_TRUE(resp->body().empty());
  // One read before the save, then the task's reads until the name is there.
  EXPECT_EQ(host.readsOf("/orban/presetList"), 4);
  const auto actions = host.actions();
  ASSERT_GE(actions.size(), 2u);
  EXPECT_EQ(actions[0].path, "/orban/presetList");
  EXPECT_EQ(actions[1].path, "/orban/preset/save");
  EXPECT_EQ(actions[1].action, CCRUD::Command);
  const auto& saved = actions[1].resource.values.at("value").getMapValue();
  ASSERT_EQ(saved.size(), 3u);
  EXPECT_EQ(saved.at("name").getStringValue(), "Drive");
  EXPECT_TRUE(saved.at("isMultiband").getBoolValue());
  EXPECT_FALSE(saved.at("isLowLatency").getBoolValue());
}

TEST_F(PostOrbanPresetTest, OnlyTheExactNameCountsAndTheWaitEndsAfter21WaitsWith500) {
  host.scriptReads("/orban/presetList", [](int) {
    return presetList({"drive", "Drive 2", "Drive "});
  });
  post(R"({"name":"Drive"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_EQ(resp->body(), "Communication failure, please try again.");
  EXPECT_FALSE(resp->ifCloseConnection());
  // The read before the save, the task's first read and one after each of 21 waits.
  EXPECT_EQ(host.readsOf("/orban/presetList"), 23);
}

TEST_F(PostOrbanPresetTest, ANameAlreadyListedIsAnsweredAtTheFirstRead) {
  host.scriptReads("/orban/presetList", [](int) { return presetList({"Drive"}); });
  post(R"({"name":"Drive"})");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.waitFor()->statusCode(), web::k200OK);
  EXPECT_EQ(host.readsOf("/orban/presetList"), 2);
}

TEST_F(PostOrbanPresetTest, AnEmptyBodyIsMissingFormDataBeforeAnyHostCall) {
  EXPECT_THROW(post(""), RequestMissingFormData);
  EXPECT_TRUE(host.actions().empty());
  EXPECT_EQ(answers.count(), 0u);
}

TEST_F(PostOrbanPresetTest, ABodyThatIsNotJsonIsInvalidJsonBeforeAnyHostCall) {
  EXPECT_THROW(post("name=Drive"), InvalidJson);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PostOrbanPresetTest, AHostWithoutAListFailsBeforeTheSave) {
  host.answer("/orban/presetList", Resource());
  EXPECT_THROW(post(R"({"name":"Drive"})"), std::out_of_range);
  EXPECT_TRUE(host.actionsOn("/orban/preset/save").empty());
}

TEST_F(PostOrbanPresetTest, ARefusedSaveFailsBeforeAnythingIsQueued) {
  host.scriptReads("/orban/presetList", [](int) { return presetList({}); });
  host.fail("/orban/preset/save",
            [] { throw tavelabi::AuthorizationFailure("User viewer may not Command"); });
  EXPECT_THROW(post(R"({"name":"Drive"})"), tavelabi::AuthorizationFailure);
  EXPECT_EQ(answers.waitFor(1, 50ms), nullptr);
}

TEST_F(PostOrbanPresetTest, AHostFailureInTheMiddleOfTheWaitIs500WithItsText) {
  host.scriptReads("/orban/presetList", [](int read) -> Resource {
    if (read == 5) throw tavelabi::NonExistentResourcePathException("No resource at list");
    return presetList({});
  });
  post(R"({"name":"Drive"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("No resource at list"), std::string::npos) << resp->body();
  EXPECT_TRUE(resp->ifCloseConnection());
}

}  // namespace
}  // namespace halvor::kelo::test
