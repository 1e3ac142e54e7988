#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "OrbanTestSupport.h"
#include "kelo/Exceptions.h"
#include "kelo/controllers/RouteTable.h"
#include "kelo/handlers/http/orban/PutOrbanActivePreset.h"
#include "support/DeferredHandlerTest.h"
#include "support/FakePluginInfo.h"
#include "support/HandlerTest.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using namespace std::chrono_literals;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource named(const std::string& name, const std::string& asked) {
  Resource active = presetResource(name, true);
  active.values["set_value"] = ResourceValue(asked);
  return active;
}

class PutOrbanActivePresetTest : public ::testing::Test {
 protected:
  PutOrbanActivePresetTest() {
    startedBackgroundQueue();
    host.answer(CCRUD::Update, "/orban/activePreset/name", Resource());
  }

  // Calls the handler as its deferred frame does; returns once the handler returned.
  void put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putOrbanActivePreset(makeRequest(web::Put, "/1/api/orban/active", "", body), resp,
                                 &host, &info, "s1", answers.callback());
  }

  ScriptedReadsHost host;
  FakePluginInfo info;
  PutOrbanActivePreset handler{shortWaits()};
  Answers answers;
};

TEST_F(PutOrbanActivePresetTest, TheRequestsOwnBodyIsAnsweredOnceTheProcessorHasTakenThePreset) {
  host.scriptReads("/orban/activePreset/name", [](int read) {
    return read < 3 ? named("Balanced", "Night") : named("Night", "Night");
  });
  host.scriptReads("/orban/activePreset/updated",
                   [](int read) { return Resource(ResourceValue(read >= 2)); });
  const std::string body = "{ \"name\" : \"Night\" }";
  const auto start = std::chrono::steady_clock::now();
  put(body);
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), body);
  // The settling time follows the flag.
  EXPECT_GE(std::chrono::steady_clock::now() - start, shortWaits().settle);
  EXPECT_EQ(host.readsOf("/orban/activePreset/name"), 3);
  EXPECT_EQ(host.readsOf("/orban/activePreset/updated"), 2);
  const auto update = host.actionsOn("/orban/activePreset/name").at(0);
  EXPECT_EQ(update.action, CCRUD::Update);
  ASSERT_EQ(update.resource.values.size(), 1u);
  EXPECT_EQ(update.resource.values.at("set_value").getStringValue(), "Night");
  EXPECT_EQ(answers.count(), 1u);
}

TEST_F(PutOrbanActivePresetTest, TheAskedForNameIsSearchedInTheReportedNameNotCompared) {
  host.scriptReads("/orban/activePreset/name",
                   [](int) { return named("Night (edited)", "Night"); });
  host.scriptReads("/orban/activePreset/updated",
                   [](int) { return Resource(ResourceValue(true)); });
  put(R"({"name":"Night"})");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.waitFor()->statusCode(), web::k200OK);
  EXPECT_EQ(host.readsOf("/orban/activePreset/name"), 1);
}

TEST_F(PutOrbanActivePresetTest, AFlagThatStaysFalseIsAnswered200AfterTwentyWaits) {
  host.scriptReads("/orban/activePreset/name", [](int) { return named("Night", "Night"); });
  host.scriptReads("/orban/activePreset/updated",
                   [](int) { return Resource(ResourceValue(false)); });
  put(R"({"name":"Night"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"name":"Night"})");
  // The first read and one after each of the twenty waits; nothing tells the client.
  EXPECT_EQ(host.readsOf("/orban/activePreset/updated"), 21);
}

TEST_F(PutOrbanActivePresetTest, TheFirstStageWaitsWithoutLimitForTheName) {
  host.scriptReads("/orban/activePreset/name", [](int read) {
    return read < 60 ? named("Balanced", "Night") : named("Night", "Night");
  });
  host.scriptReads("/orban/activePreset/updated",
                   [](int) { return Resource(ResourceValue(true)); });
  put(R"({"name":"Night"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(host.readsOf("/orban/activePreset/name"), 60);
}

TEST_F(PutOrbanActivePresetTest, TheHandlerReturnsBeforeTheWaitEnds) {
  std::atomic<bool> taken{false};
  host.scriptReads("/orban/activePreset/name", [&taken](int) {
    return taken ? named("Night", "Night") : named("Balanced", "Night");
  });
  host.scriptReads("/orban/activePreset/updated",
                   [](int) { return Resource(ResourceValue(true)); });
  put(R"({"name":"Night"})");
  // The calling thread (an I/O thread in the server) is free while the task reads on.
  while (host.readsOf("/orban/activePreset/name") < 3) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(answers.count(), 0u);
  taken = true;
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.count(), 1u);
}

TEST_F(PutOrbanActivePresetTest, ABodyWithoutANameAsksForTheEmptyName) {
  host.scriptReads("/orban/activePreset/name", [](int) { return named("Balanced", ""); });
  host.scriptReads("/orban/activePreset/updated",
                   [](int) { return Resource(ResourceValue(true)); });
  put("{}");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(host.actionsOn("/orban/activePreset/name")
                .at(0)
                .resource.values.at("set_value")
                .getStringValue(),
            "");
}

TEST_F(PutOrbanActivePresetTest, AnEmptyBodyIsMissingFormDataBeforeAnyHostCall) {
  try {
    put("");
    FAIL() << "an empty body was taken";
  } catch (const RequestMissingFormData& error) {
    EXPECT_STREQ(error.what(), "Request missing form data: orban preset name.");
  }
  EXPECT_TRUE(host.actions().empty());
  EXPECT_EQ(answers.count(), 0u);
}

TEST_F(PutOrbanActivePresetTest, ThroughTheFrameAnEmptyBodyIs500WithTheText) {
  installHost(&host, &info);
  auto wrapper = RouteTable<PutOrbanActivePreset>::deferredWrapperOf(
      std::make_shared<PutOrbanActivePreset>(shortWaits()),
      &PutOrbanActivePreset::putOrbanActivePreset);
  wrapper(makeRequest(web::Put, "/1/api/orban/active", "", ""), answers.callback());
  const web::HttpResponsePtr resp = answers.waitFor(1, 0ms);
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(resp->body().find("Request missing form data: orban preset name."), std::string::npos)
      << resp->body();
}

TEST_F(PutOrbanActivePresetTest, ABodyThatIsNotJsonIsAParserFailureWithTheReadersMessage) {
  try {
    put("{\"name\": ");
    FAIL() << "a broken body was taken";
  } catch (const tavelabi::JsonParserException& error) {
    EXPECT_EQ(std::string(error.what()).rfind("Error! Could not parse json file: ", 0), 0u)
        << error.what();
    EXPECT_GT(std::string(error.what()).size(), 34u);
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PutOrbanActivePresetTest, ARefusedUpdateFailsBeforeAnythingIsQueued) {
  // A host of its own: the fixture's host accepts every Update of the path.
  ScriptedReadsHost refusing;
  refusing.fail("/orban/activePreset/name",
                [] { throw tavelabi::AuthorizationFailure("User viewer may not Update"); });
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  EXPECT_THROW(handler.putOrbanActivePreset(
                   makeRequest(web::Put, "/1/api/orban/active", "", R"({"name":"Night"})"), resp,
                   &refusing, &info, "s1", answers.callback()),
               tavelabi::AuthorizationFailure);
  EXPECT_EQ(refusing.actions().size(), 1u);
  EXPECT_EQ(answers.waitFor(1, 50ms), nullptr);
}

TEST_F(PutOrbanActivePresetTest, ASessionThatEndsInTheMiddleOfTheWaitIs440AndClosed) {
  host.scriptReads("/orban/activePreset/name", [](int read) -> Resource {
    if (read == 4) throw tavelabi::NonExistentSessionException("Session s1 does not exist");
    return named("Balanced", "Night");
  });
  put(R"({"name":"Night"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_TRUE(resp->ifCloseConnection());
  EXPECT_EQ(host.readsOf("/orban/activePreset/name"), 4);
  EXPECT_EQ(answers.count(), 1u);
}

TEST_F(PutOrbanActivePresetTest, AHostFailureInTheSecondStageIs500WithItsText) {
  host.scriptReads("/orban/activePreset/name", [](int) { return named("Night", "Night"); });
  host.scriptReads("/orban/activePreset/updated", [](int read) -> Resource {
    if (read == 3) throw tavelabi::NonExistentResourcePathException("No resource at updated");
    return Resource(ResourceValue(false));
  });
  put(R"({"name":"Night"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(resp->body().find("No resource at updated"), std::string::npos) << resp->body();
  EXPECT_TRUE(resp->ifCloseConnection());
}

TEST_F(PutOrbanActivePresetTest, AnActivePresetWithoutTheAskedForNameIs500WithMapAt) {
  host.scriptReads("/orban/activePreset/name",
                   [](int) { return presetResource("Balanced", true); });
  put(R"({"name":"Night"})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("map::at"), std::string::npos) << resp->body();
}

}  // namespace
}  // namespace halvor::kelo::test
