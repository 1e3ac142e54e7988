#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/presets/PresetEnums.h"
#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/http/presets/UnableToCompletePresetAction.h"
#include "support/ScriptedHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using namespace std::chrono_literals;

Resource inProgress() { return Resource("inProgress", ResourceValue(true)); }

Resource failed(const std::string& text) {
  Resource answer("errorOccurred", ResourceValue(true));
  answer.values["errorMessage"] = ResourceValue(text);
  return answer;
}

protobuf::BroadcastPreset parsePreset(const std::string& json) {
  protobuf::BroadcastPreset preset;
  EXPECT_TRUE(JsonOptions::fromJson(json, preset).ok()) << json;
  return preset;
}

class PresetWaitTest : public ::testing::Test {
 protected:
  std::string wait() {
    return PresetHandlerHelpers::waitForBroadcastPreset(
        ResourceAction(CCRUD::Command, "/presets/load", Resource("guid", ResourceValue("3")),
                       nullptr, "s1"),
        &host);
  }
  ScriptedHost host;
};

TEST(PresetHandlerHelpersTest, APresetHoldsItsGuidAndEachSectionAsAResourceInKeyOrder) {
  std::map<std::string, ResourceValue> sections{
      {"power", ResourceValue(ResourceValue::Map{{"value", 1500.0}, {"units", "W"}})},
      {"mode", ResourceValue(ResourceValue::Map{{"value", "FM"}})}};
  const protobuf::BroadcastPreset preset =
      PresetHandlerHelpers::makeBroadcastPreset(ResourceValue("3"), sections);
  EXPECT_EQ(preset.guid().value(), "3");
  ASSERT_EQ(preset.resources().size(), 2u);
  EXPECT_EQ(preset.resources().at("power").values().at("value").doublevalue().value(), 1500.0);
  EXPECT_EQ(preset.resources().at("power").values().at("units").stringvalue().value(), "W");
  EXPECT_EQ(
      JsonOptions::toJson(preset),
      R"({"guid":"3","resources":{"mode":{"values":{"value":{"stringValue":"FM","type":"STRING"}}},)"
      R"("power":{"values":{"units":{"stringValue":"W","type":"STRING"},)"
      R"("value":{"doubleValue":1500,"type":"DOUBLE"}}}}})");
}

TEST(PresetHandlerHelpersTest, APresetWithAnEmptyValueMapHasOnlyItsGuid) {
  const protobuf::BroadcastPreset preset =
      PresetHandlerHelpers::makeBroadcastPreset(ResourceValue("7"), {});
  EXPECT_EQ(JsonOptions::toJson(preset), R"({"guid":"7"})");
}

TEST(PresetHandlerHelpersTest, ASectionThatIsNotAMapFails) {
  EXPECT_THROW(
      PresetHandlerHelpers::makeBroadcastPreset(ResourceValue("7"), {{"mode", ResourceValue(3)}}),
      tavelabi::WrongResourceValueType);
}

TEST(PresetHandlerHelpersTest, TheHostFormOfAPresetHoldsGuidAndItsSectionsAsMaps) {
  const Resource resource = PresetHandlerHelpers::makeBroadcastPresetResource(
      R"({"guid":"4","resources":{"power":{"values":{"value":{"doubleValue":250,"type":"DOUBLE"}}}}})");
  EXPECT_EQ(resource.values.at("guid").getStringValue(), "4");
  const ResourceValue::Map& sections = resource.values.at("value").getMapValue();
  ASSERT_EQ(sections.size(), 1u);
  EXPECT_EQ(sections.at("power").getMapValue().at("value").getDoubleValue(), 250.0);
}

TEST(PresetHandlerHelpersTest, ABodyThatIsNotJsonOrHasAnEmptyGuidIsAnInvalidBroadcastPreset) {
  for (const std::string body : {"not json", "{}", R"({"guid":""})", R"({"resources":{}})"}) {
    try {
      PresetHandlerHelpers::makeBroadcastPresetResource(body);
      ADD_FAILURE() << body;
    } catch (const tavelabi::BadlyFormedJsonStringException& error) {
      EXPECT_STREQ(error.what(), "invalid broadcast preset") << body;
    }
  }
}

TEST(PresetHandlerHelpersTest, TheFailureTextNamesTheHostsText) {
  EXPECT_STREQ(UnableToCompletePresetAction("PLL unlocked").what(),
               "Unable to complete preset action: PLL unlocked");
}

TEST(PresetHandlerHelpersTest, TheContentEnumerationsHaveTheirNamesAndNumbers) {
  EXPECT_EQ(namesOf(PresetMode{}).nameOf(PresetMode::FM_PLUS_HD), "FM_PLUS_HD");
  EXPECT_EQ(static_cast<int>(PresetMode::DRM_PLUS), 3);
  EXPECT_EQ(namesOf(RdsBaudRate{}).valueOf("BAUD_115200"), RdsBaudRate::BAUD_115200);
  EXPECT_EQ(static_cast<int>(RdsBaudRate::BAUD_150), 1);
  EXPECT_EQ(static_cast<int>(RdsDataSource::EXT_ASCII), 3);
  EXPECT_EQ(namesOf(DisableEnable{}).nameOf(DisableEnable::ENABLED), "ENABLED");
  EXPECT_EQ(static_cast<int>(DisableEnable::ENABLED), 1);
  EXPECT_EQ(namesOf(RdsNumOfAf{}).rows().size(), 26u);
  EXPECT_EQ(namesOf(RdsNumOfAf{}).nameOf(RdsNumOfAf::NUM_25), "NUM_25");
  EXPECT_EQ(namesOf(RdsPty{}).rows().size(), 32u);
  EXPECT_EQ(static_cast<int>(RdsPty::TYPE_31), 31);
  EXPECT_EQ(namesOf(AudioSourceMode{}).rows().back().second, "AUDIO_SOURCE_AUDIO_PLAYER_TO_I2S");
  EXPECT_EQ(namesOf(LVPSConfiguration{}).nameOf(static_cast<LVPSConfiguration>(9)), "");
}

TEST_F(PresetWaitTest, CompletedOnTheFirstPollIsOneFirstCallAndOnePollWithoutASleep) {
  host.script("/presets/load", {Resource("started", true), completedPreset("3", "Night")});
  const auto start = std::chrono::steady_clock::now();
  const protobuf::BroadcastPreset preset = parsePreset(wait());
  EXPECT_LT(std::chrono::steady_clock::now() - start, 400ms);
  EXPECT_EQ(preset.guid().value(), "3");
  const auto calls = host.calls();
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].action.resource.values.at("guid").getStringValue(), "3");
  // The poll: same verb and path, and only "checkProgress" = true.
  EXPECT_EQ(calls[1].action.action, CCRUD::Command);
  EXPECT_EQ(calls[1].action.path, "/presets/load");
  ASSERT_EQ(calls[1].action.resource.values.size(), 1u);
  EXPECT_TRUE(calls[1].action.resource.values.at("checkProgress").getBoolValue());
}

TEST_F(PresetWaitTest, ActionCompletedFalseStillEndsTheWait) {
  Resource done = completedPreset("3", "Night");
  done.values["actionCompleted"] = ResourceValue(false);
  host.script("/presets/load", {Resource("started", true), done});
  EXPECT_EQ(parsePreset(wait()).guid().value(), "3");
  EXPECT_EQ(host.calls().size(), 2u);
}

TEST_F(PresetWaitTest, PollsAreHalfASecondApartUntilTheHostIsDone) {
  host.script("/presets/load",
              {Resource("started", true), inProgress(), inProgress(), completedPreset("3", "N")});
  EXPECT_EQ(parsePreset(wait()).guid().value(), "3");
  const auto calls = host.calls();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_LT(calls[2].at - calls[1].at, 450ms + 1s) << "not far apart";
  EXPECT_GE(calls[2].at - calls[1].at, 490ms);
  EXPECT_GE(calls[3].at - calls[2].at, 490ms);
  // No sleep between the first call and the first poll.
  EXPECT_LT(calls[1].at - calls[0].at, 400ms);
}

TEST_F(PresetWaitTest, ErrorOccurredInTheFirstAnswerFailsWithoutAPoll) {
  host.script("/presets/load", {failed("unknown preset")});
  try {
    wait();
    ADD_FAILURE();
  } catch (const UnableToCompletePresetAction& error) {
    EXPECT_STREQ(error.what(), "Unable to complete preset action: unknown preset");
  }
  EXPECT_EQ(host.calls().size(), 1u);
}

TEST_F(PresetWaitTest, ErrorOccurredFalseStillFailsTheAction) {
  Resource answer = failed("amplifier fault");
  answer.values["errorOccurred"] = ResourceValue(false);
  host.script("/presets/load", {Resource("started", true), inProgress(), answer});
  EXPECT_THROW(wait(), UnableToCompletePresetAction);
  EXPECT_EQ(host.calls().size(), 3u);
}

TEST_F(PresetWaitTest, AnErrorWithoutMessageIsOutOfRange) {
  host.script("/presets/load", {Resource("started", true), Resource("errorOccurred", true)});
  EXPECT_THROW(wait(), std::out_of_range);
}

TEST_F(PresetWaitTest, ACompletedAnswerWithoutValueOrGuidIsOutOfRange) {
  Resource noValue = completedPreset("3", "N");
  noValue.values.erase("value");
  host.script("/presets/load", {Resource("started", true), noValue});
  EXPECT_THROW(wait(), std::out_of_range);
  Resource noGuid = completedPreset("3", "N");
  noGuid.values.erase("guid");
  host.script("/presets/load", {Resource("started", true), noGuid});
  EXPECT_THROW(wait(), std::out_of_range);
}

TEST_F(PresetWaitTest, TheWaitReadsTheAnswerWrittenIntoTheActionNotTheReturnedCopy) {
  host.returnEmptyCopies(true);
  host.script("/presets/load",
              {Resource("started", true), completedPreset("3", "From the action")});
  const protobuf::BroadcastPreset preset = parsePreset(wait());
  EXPECT_EQ(preset.resources().at("presetName").values().at("value").stringvalue().value(),
            "From the action");
}

}  // namespace
}  // namespace halvor::kelo::test
