#include <gtest/gtest.h>

#include <string>

#include "OrbanTestSupport.h"
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/orban/PutOrbanPresetControl.h"
#include "support/DeferredHandlerTest.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource control(const ResourceValue& value, const ResourceValue& setValue) {
  Resource resource(value);
  resource.values["set_value"] = setValue;
  resource.values["label"] = ResourceValue("Bass");
  return resource;
}

class PutOrbanPresetControlTest : public ::testing::Test {
 protected:
  PutOrbanPresetControlTest() {
    startedBackgroundQueue();
    host.answer(CCRUD::Update, kBass, Resource());
  }

  void put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putOrbanPresetControl(makeRequest(web::Put, "/1/api/orban/control", "", body), resp,
                                  &host, &info, "s1", answers.callback());
  }

  static constexpr const char* kBass = "/orban/activePreset/controls/Bass";
  ScriptedReadsHost host;
  FakePluginInfo info;
  PutOrbanPresetControl handler{shortWaits()};
  Answers answers;
};

TEST_F(PutOrbanPresetControlTest, TheControlIsSetAndAnsweredOnceItsValueFollows) {
  host.scriptReads(
      kBass, [](int read) { return control(ResourceValue(read < 3 ? 0 : 4), ResourceValue(4)); });
  put(R"({"label":"Bass","value":4})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_TRUE(resp->body().empty());
  EXPECT_EQ(host.readsOf(kBass), 3);
  const auto update = host.actionsOn(kBass).at(0);
  EXPECT_EQ(update.action, CCRUD::Update);
  ASSERT_EQ(update.resource.values.size(), 2u);
  EXPECT_EQ(update.resource.values.at("label").getStringValue(), "Bass");
  EXPECT_EQ(update.resource.values.at("set_value").getType(), tavelabi::ResourceValueType::INT32);
  EXPECT_EQ(update.resource.values.at("set_value").getIntValue(), 4);
}

TEST_F(PutOrbanPresetControlTest, AControlThatNeverFollowsEndsAfter21WaitsWith500) {
  host.scriptReads(kBass, [](int) { return control(ResourceValue(10), ResourceValue(12)); });
  put(R"({"label":"Bass","value":12})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_EQ(resp->body(), "Communication failure, please try again.");
  EXPECT_EQ(host.readsOf(kBass), 22);
}

TEST_F(PutOrbanPresetControlTest, AValueThatIsNoIntegerIs500WithTheTypeFailure) {
  host.scriptReads(kBass, [](int) { return control(ResourceValue(2.5), ResourceValue(4)); });
  put(R"({"label":"Bass","value":4})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body(), "Communication failure, please try again.");
  EXPECT_TRUE(resp->ifCloseConnection());
}

TEST_F(PutOrbanPresetControlTest, AnUnknownLabelFailsAtTheUpdateBeforeAnythingIsQueued) {
  host.fail("/orban/activePreset/controls/Nothing", [] {
    throw tavelabi::NonExistentResourcePathException(
        "No resource at /orban/activePreset/controls/Nothing");
  });
  EXPECT_THROW(put(R"({"label":"Nothing","value":1})"), tavelabi::NonExistentResourcePathException);
  EXPECT_EQ(answers.waitFor(1, std::chrono::milliseconds(50)), nullptr);
}

TEST_F(PutOrbanPresetControlTest, ABodyThatIsNotJsonIsInvalidJsonBeforeAnyHostCall) {
  EXPECT_THROW(put("label=Bass"), InvalidJson);
  EXPECT_THROW(put(""), RequestMissingFormData);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PutOrbanPresetControlTest, AnAbsentValueIsWrittenAsZero) {
  host.scriptReads(kBass, [](int) { return control(ResourceValue(0), ResourceValue(0)); });
  put(R"({"label":"Bass"})");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(host.actionsOn(kBass).at(0).resource.values.at("set_value").getIntValue(), 0);
}

}  // namespace
}  // namespace halvor::kelo::test
