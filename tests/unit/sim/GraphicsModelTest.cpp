#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/GraphicsModel.h"
#include "sim/models/GraphicsSignals.h"
#include "sim/models/ModelRegistry.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using kelo::test::RecordingListener;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::TimePoint;
using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

std::unique_ptr<Model> makeGraphics() { return std::make_unique<GraphicsModel>(); }

const std::vector<std::string> kChannels = {
    "exSpectrumAmplitude",     "exSpectrumFrequency",   "exSpectrumMaskAmplitude",
    "exSpectrumMaskFrequency", "exConstellationData",   "exConstellationGroupData",
    "exLissajousData",         "exWaterfallData",       "exAmAmAmplitude",
    "exAmPmAmplitude",         "exLmsFilterFreqDomain", "exLmsFreqVector",
    "exAudioModVector"};

std::string pathOf(const std::string& channel) { return GraphicsModel::kPathPrefix + channel; }

std::int32_t signed32At(const Bytes& block, std::size_t at) {
  std::uint32_t word = 0;
  for (unsigned i = 0; i < 4; ++i) word |= static_cast<std::uint32_t>(block.at(at + i)) << (8 * i);
  return static_cast<std::int32_t>(word);
}

std::int16_t signed16At(const Bytes& block, std::size_t at) {
  return static_cast<std::int16_t>(block.at(at) | (block.at(at + 1) << 8));
}

Fixture sectionFixture(const Json::Value& section) {
  Fixture fixture;
  fixture.sections.emplace_back("graphics", section);
  return fixture;
}

class GraphicsModelTest : public ::testing::Test {
 protected:
  GraphicsModelTest() { ModelRegistry::install(host, {makeGraphics}); }

  Bytes block(const std::string& channel, const std::string& key = "value") {
    const Resource stored = *host.peek(pathOf(channel));
    const tavelabi::ResourceValue& value = stored.values.at(key);
    return Bytes(value.getByteArray(), value.getByteArray() + value.getByteArraySize());
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(GraphicsModelTest, EveryChannelThatAGraphReadsIsABlockOfBytes) {
  for (const std::string& channel : kChannels) {
    const auto stored = host.peek(pathOf(channel));
    ASSERT_TRUE(stored.has_value()) << channel;
    EXPECT_EQ(stored->values.at("value").getType(), tavelabi::ResourceValueType::UINT8_ARRAY)
        << channel;
  }
}

TEST_F(GraphicsModelTest, TheSpectrumTraceIsTheNarrowFormAndTheMaskTheWideOne) {
  const Bytes amplitude = block("exSpectrumAmplitude");
  const Bytes frequency = block("exSpectrumFrequency");
  EXPECT_EQ(amplitude.size(), 2u * GraphicsSignals::kDefaultSpectrumPoints);
  EXPECT_EQ(frequency.size() >> 1, amplitude.size());
  EXPECT_EQ(block("exSpectrumMaskAmplitude").size(), block("exSpectrumMaskFrequency").size());
  // The frequencies rise across the span around the carrier, in Hz.
  EXPECT_EQ(signed32At(frequency, 0), 97900000);
  EXPECT_GT(signed32At(frequency, frequency.size() - 4), 98299000);
}

TEST_F(GraphicsModelTest, TheCarrierStandsAboveTheNoiseFloor) {
  const Bytes amplitude = block("exSpectrumAmplitude");
  const std::size_t points = amplitude.size() / 2;
  EXPECT_GT(signed16At(amplitude, 2 * (points / 2)), -20);
  EXPECT_LT(signed16At(amplitude, 0), -70);
  EXPECT_LT(signed16At(amplitude, amplitude.size() - 2), -70);
}

TEST_F(GraphicsModelTest, TheAmplitudeChannelCarriesTheSevenScaleKeys) {
  const Resource stored = *host.peek(pathOf("exSpectrumAmplitude"));
  EXPECT_EQ(stored.values.at("centerFrequency").getDoubleValue(), 98.1);
  EXPECT_EQ(stored.values.at("centerFrequencyUnits").getStringValue(), "MHz");
  EXPECT_EQ(stored.values.at("frequencySpan").getDoubleValue(), 0.4);
  EXPECT_EQ(stored.values.at("minValue").getDoubleValue(), -100.0);
  EXPECT_EQ(stored.values.at("minValueUnits").getStringValue(), "dBc");
  EXPECT_EQ(stored.values.at("maxValue").getDoubleValue(), 10.0);
  EXPECT_EQ(stored.values.at("maxValueUnits").getStringValue(), "dBc");
}

TEST_F(GraphicsModelTest, BlocksHoldWholeEntriesOfTheirLayouts) {
  EXPECT_EQ(block("exConstellationData").size(), 8u * GraphicsSignals::kConstellationSymbols);
  EXPECT_EQ(block("exConstellationGroupData").size(), 16u * GraphicsSignals::kSubCarrierGroups);
  EXPECT_EQ(block("exLissajousData").size(), 8u * GraphicsSignals::kLissajousPoints);
  EXPECT_EQ(block("exWaterfallData").size() % 4, 0u);
  EXPECT_EQ(block("exAmAmAmplitude").size(), 4u * GraphicsSignals::kCorrectionPoints);
  EXPECT_EQ(block("exAmPmAmplitude").size(), 4u * GraphicsSignals::kCorrectionPoints);
  EXPECT_EQ(block("exLmsFilterFreqDomain").size(), 2u * GraphicsSignals::kEqPoints);
  EXPECT_EQ(block("exLmsFreqVector").size(), 4u * GraphicsSignals::kEqPoints);
  EXPECT_EQ(block("exAudioModVector").size(), 70u);
}

TEST_F(GraphicsModelTest, HeadersHoldTheirWordsAtByteTwelve) {
  const Bytes lissajous = block("exLissajousData", "header");
  ASSERT_GE(lissajous.size(), 14u);
  EXPECT_EQ(signed16At(lissajous, 12), GraphicsSignals::kLissajousPoints);
  const Bytes audio = block("exAudioModVector", "header");
  ASSERT_EQ(audio.size(), 16u);
  EXPECT_EQ(Bytes(audio.begin() + 12, audio.end()), (Bytes{1, 0, 3, 1}));
}

TEST_F(GraphicsModelTest, TheConstellationIsFourClustersOfQpsk) {
  const Bytes symbols = block("exConstellationData");
  for (std::size_t at = 0; at < symbols.size(); at += 8) {
    const double x = signed32At(symbols, at) / 16777216.0;
    const double y = signed32At(symbols, at + 4) / 16777216.0;
    EXPECT_NEAR(std::abs(x), 0.7 * std::cos(0.785), 0.3);
    EXPECT_NEAR(std::abs(y), 0.7 * std::sin(0.785), 0.3);
  }
}

TEST_F(GraphicsModelTest, EveryChannelIsMeasuredAgainAboutTenTimesASecond) {
  host.waitForListeners();
  RecordingListener listener("/system/graphics/*", {CCRUD::Create, CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  const Bytes before = block("exConstellationData");
  const TimePoint start(10s);
  host.tickModels(start);
  host.tickModels(start + 50ms);
  host.waitForListeners();
  EXPECT_EQ(listener.calls().size(), 0u);
  host.tickModels(start + 100ms);
  host.waitForListeners();
  ASSERT_EQ(listener.calls().size(), kChannels.size());
  EXPECT_NE(block("exConstellationData"), before);
  host.tickModels(start + 200ms);
  host.waitForListeners();
  EXPECT_EQ(listener.calls().size(), 2 * kChannels.size());
}

TEST_F(GraphicsModelTest, TheSpectrumAmplitudeIsWrittenAfterItsFrequencyAndMask) {
  host.waitForListeners();
  RecordingListener listener("/system/graphics/*", {CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(1s + 100ms));
  host.waitForListeners();
  std::vector<std::string> order;
  for (const auto& call : listener.calls()) order.push_back(call.path);
  const auto at = [&](const std::string& channel) {
    return std::find(order.begin(), order.end(), pathOf(channel)) - order.begin();
  };
  EXPECT_GT(at("exSpectrumAmplitude"), at("exSpectrumFrequency"));
  EXPECT_GT(at("exSpectrumAmplitude"), at("exSpectrumMaskAmplitude"));
  EXPECT_GT(at("exSpectrumAmplitude"), at("exSpectrumMaskFrequency"));
  EXPECT_GT(at("exLmsFilterFreqDomain"), at("exLmsFreqVector"));
  // An update keeps the scale keys that were stored with the trace.
  EXPECT_EQ(host.peek(pathOf("exSpectrumAmplitude"))->values.count("centerFrequency"), 1u);
}

TEST(GraphicsModelFixtureTest, AFixtureSetsThePointsAndCanStopTheMeasurements) {
  SimTavel host(HostWithUsers::quietOptions());
  Json::Value section;
  section["spectrumPoints"] = 8192;
  section["moving"] = false;
  host.applyFixture(sectionFixture(section));
  ModelRegistry::install(host, {makeGraphics});
  const tavelabi::ResourceValue amplitude =
      host.peek(pathOf("exSpectrumAmplitude"))->values.at("value");
  EXPECT_EQ(amplitude.getByteArraySize(), 2u * 8192);
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(5s));
  EXPECT_EQ(host.peek(pathOf("exSpectrumAmplitude"))->values.at("value"), amplitude);
}

TEST(GraphicsModelFixtureTest, BadSettingsAreRefused) {
  GraphicsModel model;
  Json::Value points;
  points["spectrumPoints"] = 70000;
  EXPECT_THROW(model.applyFixture(points), std::invalid_argument);
  Json::Value interval;
  interval["updateIntervalMs"] = 0;
  EXPECT_THROW(model.applyFixture(interval), std::invalid_argument);
  Json::Value moving;
  moving["moving"] = "no";
  EXPECT_THROW(model.applyFixture(moving), std::invalid_argument);
}

TEST(GraphicsModelFixtureTest, AChannelSeededByAFixtureIsKept) {
  SimTavel host(HostWithUsers::quietOptions());
  Fixture fixture;
  tavelabi::ResourceValue bytes;
  bytes.setByteArray({1, 2, 3, 4});
  fixture.resources.emplace_back(pathOf("exWaterfallData"), Resource("value", bytes));
  host.applyFixture(fixture);
  ModelRegistry::install(host, {makeGraphics});
  EXPECT_EQ(host.peek(pathOf("exWaterfallData"))->values.at("value").getByteArraySize(), 4u);
}

}  // namespace
}  // namespace halvor::sim

namespace halvor::sim {
namespace {

TEST(GraphicsModelFixtureTest, AFixtureAfterTheSeedingWritesTheSpectrumAgainAtOnce) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::install(host, {makeGraphics});
  Json::Value section;
  section["spectrumPoints"] = 4096;
  section["moving"] = false;
  host.applyFixture(sectionFixture(section));
  const Resource amplitude = *host.peek(pathOf("exSpectrumAmplitude"));
  EXPECT_EQ(amplitude.values.at("value").getByteArraySize(), 2u * 4096);
  EXPECT_EQ(host.peek(pathOf("exSpectrumFrequency"))->values.at("value").getByteArraySize(),
            4u * 4096);
  EXPECT_EQ(amplitude.values.count("centerFrequency"), 1u);
}

}  // namespace
}  // namespace halvor::sim
