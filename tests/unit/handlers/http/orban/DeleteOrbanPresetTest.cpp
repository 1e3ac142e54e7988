#include <gtest/gtest.h>

#include <string>

#include "OrbanTestSupport.h"
#include "kelo/handlers/http/orban/DeleteOrbanPreset.h"
#include "support/DeferredHandlerTest.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using namespace std::chrono_literals;
using tavelabi::CCRUD;
using tavelabi::Resource;

class DeleteOrbanPresetTest : public ::testing::Test {
 protected:
  DeleteOrbanPresetTest() {
    startedBackgroundQueue();
    host.answer("/orban/preset/delete", Resource());
  }

  void remove(const std::string& name) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.deleteOrbanPreset(makeRequest(web::Delete, "/1/api/orban/preset/" + name, ""), resp,
                              &host, &info, "s1", answers.callback(), name);
  }

  ScriptedReadsHost host;
  FakePluginInfo info;
  DeleteOrbanPreset handler{shortWaits()};
  Answers answers;
};

TEST_F(DeleteOrbanPresetTest, TheDeleteIsAnsweredOnceTheNumberOfPresetsChanges) {
  host.scriptReads("/orban/presetList", [](int read) {
    return read < 4 ? presetList({"Balanced", "Night"}) : presetList({"Balanced"});
  });
  remove("Night");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_TRUE(resp->body().empty());
  EXPECT_EQ(host.readsOf("/orban/presetList"), 4);
  const auto actions = host.actions();
  EXPECT_EQ(actions[0].path, "/orban/presetList");
  EXPECT_EQ(actions[1].path, "/orban/preset/delete");
  EXPECT_EQ(actions[1].action, CCRUD::Command);
  EXPECT_EQ(actions[1].resource.values.at("value").getStringValue(), "Night");
}

TEST_F(DeleteOrbanPresetTest, ANameTheHostRefusesToRemoveEndsAfter21WaitsWith500) {
  host.scriptReads("/orban/presetList", [](int) { return presetList({"Balanced", "Night"}); });
  remove("Balanced");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_EQ(resp->body(), "Communication failure, please try again.");
  // The count before the delete, the task's first read and one after each of 21 waits.
  EXPECT_EQ(host.readsOf("/orban/presetList"), 23);
  EXPECT_EQ(answers.count(), 1u);
}

TEST_F(DeleteOrbanPresetTest, AnyChangeOfTheNumberCountsEvenAGrowth) {
  host.scriptReads("/orban/presetList", [](int read) {
    return read < 2 ? presetList({"Night"}) : presetList({"Night", "Other"});
  });
  remove("Night");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.waitFor()->statusCode(), web::k200OK);
  EXPECT_EQ(host.readsOf("/orban/presetList"), 2);
}

TEST_F(DeleteOrbanPresetTest, AnUnknownNameRefusedByTheHostFailsBeforeAnythingIsQueued) {
  host.scriptReads("/orban/presetList", [](int) { return presetList({"Balanced"}); });
  host.fail("/orban/preset/delete",
            [] { throw tavelabi::NonExistentResourcePathException("No preset Nowhere"); });
  EXPECT_THROW(remove("Nowhere"), tavelabi::NonExistentResourcePathException);
  EXPECT_EQ(answers.waitFor(1, 50ms), nullptr);
  EXPECT_EQ(host.readsOf("/orban/presetList"), 1);
}

TEST_F(DeleteOrbanPresetTest, ASessionThatEndsInTheMiddleOfTheWaitIs440AndClosed) {
  host.scriptReads("/orban/presetList", [](int read) -> Resource {
    if (read == 3) throw tavelabi::NonExistentSessionException("Session s1 does not exist");
    return presetList({"Night"});
  });
  remove("Night");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_TRUE(resp->ifCloseConnection());
  EXPECT_TRUE(resp->body().empty());
}

TEST_F(DeleteOrbanPresetTest, ARightLostInTheMiddleOfTheWaitIs403AndClosed) {
  host.scriptReads("/orban/presetList", [](int read) -> Resource {
    if (read == 2) throw tavelabi::AuthorizationFailure("User viewer may not Read");
    return presetList({"Night"});
  });
  remove("Night");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 403);
  EXPECT_TRUE(resp->ifCloseConnection());
}

}  // namespace
}  // namespace halvor::kelo::test
