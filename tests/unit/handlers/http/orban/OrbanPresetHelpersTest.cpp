#include <gtest/gtest.h>

#include "OrbanTestSupport.h"
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

TEST(OrbanPresetHelpersTest, ThePathsAreBuiltFromTheHostsParts) {
  EXPECT_EQ(OrbanPresetHelpers::presetPath("Night Jazz"), "/orban/presetList/Night Jazz");
  EXPECT_EQ(OrbanPresetHelpers::activeNamePath(), "/orban/activePreset/name");
  EXPECT_EQ(OrbanPresetHelpers::activeUpdatedPath(), "/orban/activePreset/updated");
  EXPECT_EQ(OrbanPresetHelpers::controlPath("Bass"), "/orban/activePreset/controls/Bass");
}

TEST(OrbanPresetHelpersTest, ThePresetValueHoldsOnlyTheFieldsThatAreSet) {
  protobuf::OrbanPresetName preset;
  preset.mutable_name()->set_value("Drive");
  preset.mutable_islessmoreunvailable()->set_value(false);
  const tavelabi::ResourceValue value = OrbanPresetHelpers::presetValue(preset);
  const auto& fields = value.getMapValue();
  ASSERT_EQ(fields.size(), 2u);
  EXPECT_EQ(fields.at("name").getStringValue(), "Drive");
  EXPECT_FALSE(fields.at("isLessMoreUnvailable").getBoolValue());
}

TEST(OrbanPresetHelpersTest, AnEmptyPresetIsAnEmptyMap) {
  const tavelabi::ResourceValue value = OrbanPresetHelpers::presetValue({});
  EXPECT_EQ(value.getType(), tavelabi::ResourceValueType::MAP_VALUE);
  EXPECT_TRUE(value.getMapValue().empty());
}

TEST(OrbanPresetHelpersTest, TheRequestedNameIsTheBodysName) {
  EXPECT_EQ(OrbanPresetHelpers::requestedName(R"({"name":"Night","other":1})"), "Night");
  EXPECT_EQ(OrbanPresetHelpers::requestedName("{}"), "");
}

TEST(OrbanPresetHelpersTest, AnEmptyBodyComesBeforeTheParser) {
  EXPECT_THROW(OrbanPresetHelpers::requestedName(""), RequestMissingFormData);
  EXPECT_THROW(OrbanPresetHelpers::requestedName("{"), tavelabi::JsonParserException);
}

TEST(OrbanPresetHelpersTest, ABodyThatIsNoObjectFailsWhenTheNameIsTaken) {
  EXPECT_ANY_THROW(OrbanPresetHelpers::requestedName("[1,2]"));
}

TEST(OrbanPresetHelpersTest, TheGiveUpIs500WithTheCommunicationFailureAfter21Waits) {
  const BackgroundConfirmation::GiveUp giveUp = OrbanPresetHelpers::communicationFailure();
  EXPECT_EQ(giveUp.retries, 21);
  EXPECT_EQ(giveUp.status, 500);
  EXPECT_EQ(giveUp.text, "Communication failure, please try again.");
}

TEST(OrbanPresetHelpersTest, TheServersWaitsAreOneSecondAndTenSecondsOfSettling) {
  const OrbanPresetHelpers::Waits waits;
  EXPECT_EQ(waits.period, std::chrono::seconds(1));
  EXPECT_EQ(waits.settle, std::chrono::seconds(10));
}

}  // namespace
}  // namespace halvor::kelo::test
