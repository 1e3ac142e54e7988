#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/AudioInputModel.h"
#include "sim/models/MeterModel.h"
#include "sim/models/ModelRegistry.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::Resource;
using tavelabi::ResourceValue;

std::unique_ptr<Model> makeAudio() { return std::make_unique<AudioInputModel>(); }
std::unique_ptr<Model> makeMeters() { return std::make_unique<MeterModel>(); }

TEST(AudioInputModelTest, EveryChannelNamesAMeterOfTheMeterTree) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::install(host, {makeMeters, makeAudio});
  const ResourceValue::List inputs =
      host.peek(AudioInputModel::kInputsPath)->values.at("value").getListValue();
  ASSERT_GE(inputs.size(), 4u);
  std::size_t channels = 0;
  std::vector<std::string> names;
  for (const ResourceValue& input : inputs) {
    const ResourceValue::Map keys = input.getMapValue();
    names.push_back(keys.at("name").getStringValue());
    const auto list = keys.find("channels");
    if (list == keys.end()) continue;
    for (const ResourceValue& channel : list->second.getListValue()) {
      const ResourceValue::Map channelKeys = channel.getMapValue();
      EXPECT_FALSE(channelKeys.at("label").getStringValue().empty());
      const std::string meter = channelKeys.at("meterPath").getStringValue();
      EXPECT_TRUE(host.peek(meter).has_value()) << meter;
      ++channels;
    }
  }
  EXPECT_GE(channels, 7u);
  for (const std::string name : {"Analog", "AES 1", "AES 2", "MPX"}) {
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
  }
}

TEST(AudioInputModelTest, OneInputHasNoChannels) {
  const ResourceValue::List inputs = AudioInputModel::inputs().values.at("value").getListValue();
  const auto without = std::count_if(inputs.begin(), inputs.end(), [](const ResourceValue& input) {
    return input.getMapValue().count("channels") == 0;
  });
  EXPECT_EQ(without, 1);
}

TEST(AudioInputModelTest, AFixturesInputsAreKept) {
  SimTavel host(HostWithUsers::quietOptions());
  Fixture fixture;
  fixture.resources.emplace_back(AudioInputModel::kInputsPath,
                                 Resource(ResourceValue(std::vector<std::string>{})));
  host.applyFixture(fixture);
  ModelRegistry::install(host, {makeAudio});
  EXPECT_TRUE(host.peek(AudioInputModel::kInputsPath)->values.at("value").getListValue().empty());
}

}  // namespace
}  // namespace halvor::sim
