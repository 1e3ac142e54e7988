#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/handlers/http/audio/AudioRoutes.h"
#include "kelo/handlers/http/audio/GetAudioInputsHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Map = tavelabi::ResourceValue::Map;

constexpr const char* kInputs = "/system/audio/inputs";

ResourceValue listOf(std::vector<ResourceValue> elements) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(elements);
  return list;
}

ResourceValue text(const std::string& value) { return ResourceValue(value); }

ResourceValue channel(const std::string& label, const std::string& meterPath) {
  return ResourceValue(Map{{"label", text(label)}, {"meterPath", text(meterPath)}});
}

class GetAudioInputsHandlerTest : public test::HandlerTest<GetAudioInputsHandler> {
 protected:
  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/audio/inputs", "", "", "client");
  }
};

TEST_F(GetAudioInputsHandlerTest, ReadsTheInputsUnderTheClientsSessionAndAnswersThemInOrder) {
  host.answer(kInputs,
              Resource(listOf(
                  {ResourceValue(Map{{"name", text("Analog")},
                                     {"channels", listOf({channel("Left", "/meters/audio/l"),
                                                          channel("Right", "/meters/audio/r")})}}),
                   ResourceValue(Map{{"name", text("MPX")},
                                     {"channels", listOf({channel("MPX", "/m/x")})}})})));
  const web::HttpResponsePtr resp = get();

  const tavelabi::ResourceAction& read = host.onlyAction();
  EXPECT_EQ(read.action, CCRUD::Read);
  EXPECT_EQ(read.path, kInputs);
  EXPECT_EQ(read.sessionId, "client");
  EXPECT_TRUE(read.resource.values.empty());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(
      resp->body(),
      R"({"inputs":[{"name":"Analog","channels":[{"label":"Left","meterPath":"/meters/audio/l"},)"
      R"({"label":"Right","meterPath":"/meters/audio/r"}]},)"
      R"({"name":"MPX","channels":[{"label":"MPX","meterPath":"/m/x"}]}]})");
}

TEST_F(GetAudioInputsHandlerTest, AnEmptyListIsAnEmptyAnswerWith200) {
  host.answer(kInputs, Resource(listOf({})));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
}

TEST_F(GetAudioInputsHandlerTest, AnInputWithoutChannelsIsListedWithItsNameOnly) {
  host.answer(kInputs, Resource(listOf({ResourceValue(Map{{"name", text("Player")}})})));
  EXPECT_EQ(get()->body(), R"({"inputs":[{"name":"Player"}]})");
}

TEST_F(GetAudioInputsHandlerTest, AChannelWithoutMeterPathIsListedWithItsLabelOnly) {
  host.answer(kInputs,
              Resource(listOf({ResourceValue(
                  Map{{"name", text("AES 1")},
                      {"channels", listOf({ResourceValue(Map{{"label", text("Left")}})})}})})));
  EXPECT_EQ(get()->body(), R"({"inputs":[{"name":"AES 1","channels":[{"label":"Left"}]}]})");
}

TEST_F(GetAudioInputsHandlerTest, MissingKeysStayUnsetAndUnknownKeysAreLeftOut) {
  host.answer(kInputs,
              Resource(listOf({ResourceValue(Map{{"channels", listOf({ResourceValue(Map{})})},
                                                 {"gain", ResourceValue(3)}})})));
  EXPECT_EQ(get()->body(), R"({"inputs":[{"channels":[{}]}]})");
}

TEST_F(GetAudioInputsHandlerTest, AnEmptyChannelListGivesAnInputWithoutChannels) {
  host.answer(
      kInputs,
      Resource(listOf({ResourceValue(Map{{"name", text("AES 2")}, {"channels", listOf({})}})})));
  EXPECT_EQ(get()->body(), R"({"inputs":[{"name":"AES 2"}]})");
}

TEST_F(GetAudioInputsHandlerTest, AnAnswerWithoutValueThrowsOutOfRange) {
  host.answer(kInputs, Resource("inputs", listOf({})));
  EXPECT_THROW(get(), std::out_of_range);
}

// ---- through the frame ----

class GetAudioInputsFrameTest : public GetAudioInputsHandlerTest {
 protected:
  void SetUp() override { test::installHost(&host, &info); }
  web::HttpResponsePtr frame() {
    return test::throughFrame(handler, test::makeRequest(web::Get, "/1/api/audio/inputs", ""));
  }
};

TEST_F(GetAudioInputsFrameTest, AMissingValueIs500) {
  host.answer(kInputs, Resource());
  const web::HttpResponsePtr resp = frame();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("map::at"), std::string::npos) << resp->body();
}

TEST_F(GetAudioInputsFrameTest, AnElementThatIsNotAMapIs500) {
  host.answer(kInputs, Resource(listOf({text("Analog")})));
  EXPECT_EQ(frame()->statusCode(), 500);
}

TEST_F(GetAudioInputsFrameTest, AHostFailureIsItsAnswer) {
  host.fail(kInputs, [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /system/audio/inputs");
  });
  const web::HttpResponsePtr resp = frame();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("No resource at /system/audio/inputs"), std::string::npos);
  host.fail(kInputs, [] { throw tavelabi::AuthorizationFailure("User x may not Read it"); });
  EXPECT_EQ(frame()->statusCode(), 403);
}

TEST(AudioRoutesTest, RegistersTheInputsRouteUnderTheVersionPrefix) {
  web::HttpAppFramework application;
  AudioRoutes::registerAudioRoutes(application);
  const std::vector<web::HttpAppFramework::HandlerInfo> expected = {
      {"/1/api/audio/inputs", web::Get, "GetAudioInputsHandler"}};
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

}  // namespace
}  // namespace halvor::kelo
