#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/ws/WsAmAmCorrection.h"
#include "kelo/handlers/ws/WsAmPmCorrection.h"
#include "kelo/handlers/ws/WsAudioModVectors.h"
#include "kelo/handlers/ws/WsEqFrequencyResponse.h"
#include "kelo/handlers/ws/WsGetConstellation.h"
#include "kelo/handlers/ws/WsGetFrequencyTrace.h"
#include "kelo/handlers/ws/WsGetLissajous.h"
#include "kelo/handlers/ws/WsGetSubCarriers.h"
#include "kelo/handlers/ws/WsPowerDistribution.h"
#include "support/RecordingHost.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

template <class Message>
Message parsed(const std::string& frame) {
  Message message;
  if (!message.ParseFromString(frame)) throw std::runtime_error("not the endpoint's message");
  return message;
}

Resource withHeader(const Bytes& value, const Bytes& header) {
  Resource keys = channel(value);
  keys.values["header"] = byteArray(header);
  return keys;
}

Resource spectrumAmplitude(const Bytes& block) {
  Resource answer = channel(block);
  answer.values["centerFrequency"] = ResourceValue(98.1);
  answer.values["centerFrequencyUnits"] = ResourceValue(std::string("MHz"));
  answer.values["frequencySpan"] = ResourceValue(0.4);
  answer.values["minValue"] = ResourceValue(-100.0);
  answer.values["minValueUnits"] = ResourceValue(std::string("dBc"));
  answer.values["maxValue"] = ResourceValue(0.0);
  answer.values["maxValueUnits"] = ResourceValue(std::string("dBc"));
  return answer;
}

// Every channel that the nine endpoints read, each with a small known block.
std::vector<std::pair<std::string, Resource>> seededChannels() {
  return {
      {"exSpectrumAmplitude", spectrumAmplitude(words16({5}))},
      {"exSpectrumFrequency", channel(words32({100}))},
      {"exSpectrumMaskAmplitude", channel(words32({0}))},
      {"exSpectrumMaskFrequency", channel(words32({200}))},
      {"exConstellationData", channel(words32({16777216U, 0}))},
      {"exConstellationGroupData", channel(Bytes(16, 0))},
      {"exLissajousData", withHeader(words32({0, 8388608U}), Bytes(14, 0))},
      {"exWaterfallData", channel(words16({100, 7}))},
      {"exAmAmAmplitude", channel(words32({134217728U}))},
      {"exAmPmAmplitude", channel(words32({2147483648U}))},
      {"exLmsFilterFreqDomain", channel(words16({100}))},
      {"exLmsFreqVector", channel(words32({1000}))},
      {"exAudioModVector", withHeader(Bytes(70, 0), Bytes(16, 0))},
  };
}

class WsGraphicsEndpointsTest : public ::testing::Test {
 protected:
  WsGraphicsEndpointsTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    for (const auto& [name, resource] : seededChannels()) {
      unitHost.hostAction(CCRUD::Create, graphicsPath(name), resource);
    }
  }

  template <class Endpoint>
  std::shared_ptr<FakeConnection> connect(Endpoint& endpoint) {
    auto conn = std::make_shared<FakeConnection>();
    endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
    return conn;
  }

  void change(const std::string& name, const Resource& keys) {
    unitHost.hostAction(CCRUD::Update, graphicsPath(name), keys);
  }

  WsUnitHost unitHost;
  std::string session = unitHost.openSession("viewer");
};

TEST_F(WsGraphicsEndpointsTest, TheSpectrumIsSentFirstThenAtEveryChangeOfItsAmplitude) {
  WsGetSpectrum endpoint;
  auto conn = connect(endpoint);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  const auto first = parsed<protobuf::Spectrum>(conn->sent()[0].data);
  ASSERT_EQ(first.spectrumpoints_size(), 1);
  EXPECT_EQ(first.spectrumpoints(0).y().value(), 5.0);
  EXPECT_EQ(first.spectrumpoints(0).x().value(), 100.0);
  ASSERT_EQ(first.maskpoints_size(), 1);
  EXPECT_EQ(first.maxvalueunits().value(), "dBc");
  EXPECT_EQ(unitHost.manager().getListeners().count(WsGetSpectrum::kPattern), 1u);

  // The frequency and mask channels alone push nothing; the next amplitude change shows them.
  change("exSpectrumFrequency", channel(words32({300})));
  change("exSpectrumMaskFrequency", channel(words32({400})));
  EXPECT_EQ(conn->sent().size(), 1u);
  change("exSpectrumAmplitude", channel(words16({6})));
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto pushed = parsed<protobuf::Spectrum>(conn->sent()[1].data);
  EXPECT_EQ(pushed.spectrumpoints(0).y().value(), 6.0);
  EXPECT_EQ(pushed.spectrumpoints(0).x().value(), 300.0);
  EXPECT_EQ(pushed.maskpoints(0).x().value(), 400.0);
  EXPECT_EQ(pushed.centerfrequency().value(), 98.1);
}

TEST_F(WsGraphicsEndpointsTest, TheConstellationFollowsItsChannel) {
  WsGetConstellation endpoint;
  auto conn = connect(endpoint);
  change("exConstellationData", channel(words32({0, static_cast<std::uint32_t>(-8388608)})));
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(parsed<protobuf::Constellation>(conn->sent()[0].data).points(0).x().value(), 1.0);
  EXPECT_EQ(parsed<protobuf::Constellation>(conn->sent()[1].data).points(0).y().value(), -0.5);
}

TEST_F(WsGraphicsEndpointsTest, TheSubCarriersFollowTheirChannel) {
  WsGetSubCarriers endpoint;
  auto conn = connect(endpoint);
  Bytes entry(14, 0);
  put16(entry, 9);
  change("exConstellationGroupData", channel(entry));
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(
      parsed<protobuf::SubCarrierGroupList>(conn->sent()[0].data).groups(0).groupindex().value(),
      0);
  EXPECT_EQ(
      parsed<protobuf::SubCarrierGroupList>(conn->sent()[1].data).groups(0).groupindex().value(),
      9);
}

TEST_F(WsGraphicsEndpointsTest, TheLissajousFigureCarriesItsHeaderValue) {
  WsGetLissajous endpoint;
  auto conn = connect(endpoint);
  Bytes header(12, 0);
  put16(header, 65535);
  change("exLissajousData", withHeader(words32({0, 0}), header));
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto first = parsed<protobuf::Lissajous>(conn->sent()[0].data);
  EXPECT_EQ(first.points(0).y().value(), 0.5);
  EXPECT_EQ(first.headervalue().value(), 0);
  EXPECT_EQ(parsed<protobuf::Lissajous>(conn->sent()[1].data).headervalue().value(), 65535);
}

TEST_F(WsGraphicsEndpointsTest, ThePowerDistributionFollowsTheWaterfallChannel) {
  WsPowerDistribution endpoint;
  auto conn = connect(endpoint);
  change("exWaterfallData", channel(Bytes(6, 0)));
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(parsed<protobuf::PowerDistribution>(conn->sent()[0].data).points(0).x().value(), 1.0);
  EXPECT_EQ(parsed<protobuf::PowerDistribution>(conn->sent()[1].data).points_size(), 0);
}

TEST_F(WsGraphicsEndpointsTest, TheCorrectionCurvesFollowTheirChannels) {
  WsAmAmCorrection amAm;
  WsAmPmCorrection amPm;
  auto amAmConn = connect(amAm);
  auto amPmConn = connect(amPm);
  change("exAmAmAmplitude", channel(words32({0, 268435456U})));
  ASSERT_EQ(amAmConn->sent().size(), 2u);
  EXPECT_EQ(amPmConn->sent().size(), 1u);
  EXPECT_EQ(parsed<protobuf::AmAmCorrection>(amAmConn->sent()[0].data).points(0).y().value(), 1.0);
  EXPECT_EQ(parsed<protobuf::AmAmCorrection>(amAmConn->sent()[1].data).points(1).y().value(), 2.0);
  EXPECT_EQ(parsed<protobuf::AmPmCorrection>(amPmConn->sent()[0].data).points(0).y().value(),
            180.0);
}

TEST_F(WsGraphicsEndpointsTest, TheEqualiserPushesOnItsResponsesNotOnItsFrequencies) {
  WsEqFrequencyResponse endpoint;
  auto conn = connect(endpoint);
  EXPECT_EQ(unitHost.manager().getListeners().count("/system/graphics/exLmsFilterFreqDomain"), 1u);
  change("exLmsFreqVector", channel(words32({2000})));
  EXPECT_EQ(conn->sent().size(), 1u);
  change("exLmsFilterFreqDomain", channel(words16({static_cast<std::uint16_t>(-250)})));
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto pushed = parsed<protobuf::EqFrequencyResponse>(conn->sent()[1].data);
  EXPECT_EQ(pushed.frequencies(0).value(), 2000);
  EXPECT_EQ(pushed.responses(0).value(), -2.5);
}

TEST_F(WsGraphicsEndpointsTest, TheAudioVectorsFollowTheirChannel) {
  WsAudioModVectors endpoint;
  auto conn = connect(endpoint);
  Bytes header(12, 0);
  header.insert(header.end(), {1, 0, 3, 1});
  change("exAudioModVector", withHeader(words16({65535, 0, 0}), header));
  // A record of 6 bytes is too short: that change is not sent.
  EXPECT_EQ(conn->sent().size(), 1u);
  Bytes record = words16({65535});
  record.resize(70, 0);
  change("exAudioModVector", withHeader(record, header));
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto pushed = parsed<protobuf::AudioModVectors>(conn->sent()[1].data);
  EXPECT_EQ(pushed.audiovector1().value1().value(), 655.35);
  EXPECT_EQ(pushed.audiosourcemode2(), protobuf::AUDIO_SOURCE_DIGITAL_AES);
}

TEST_F(WsGraphicsEndpointsTest, ADeadSessionIsClosedWith1011BeforeAnyFrame) {
  WsGetSpectrum endpoint;
  auto conn = std::make_shared<FakeConnection>();
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=unknown"), conn);
  EXPECT_TRUE(conn->sent().empty());
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1011);
}

// The host's actions of one rendering, recorded by a host double in the simulated host's place.
class WsGraphicsReadsTest : public WsGraphicsEndpointsTest {
 protected:
  void SetUp() override {
    for (const auto& [name, resource] : seededChannels()) {
      recording.answer(graphicsPath(name), resource);
    }
    interface().tavel = &recording;
  }
  void TearDown() override { interface().tavel = &unitHost.host(); }
  static WebKeloInterface& interface() { return *web::app().getPlugin<WebKeloInterface>(); }

  // Renders once and gives the reads: the session check on `path`, then the channels.
  template <class Endpoint>
  std::vector<tavelabi::ResourceAction> readsOf() {
    recording.clearActions();
    std::string message;
    Resource ignored("value", ResourceValue(std::string("not a block")));
    Endpoint::messageGenerator(upgradeRequest(), ignored, "client-2", message, Endpoint::kPattern);
    EXPECT_FALSE(message.empty());
    return recording.actions();
  }

  template <class Endpoint>
  void expectReads(const std::vector<std::string>& channels, bool flag) {
    const std::vector<tavelabi::ResourceAction> actions = readsOf<Endpoint>();
    ASSERT_EQ(actions.size(), channels.size() + 1) << Endpoint::kPath;
    EXPECT_EQ(actions[0].path, Endpoint::kPattern);
    EXPECT_TRUE(actions[0].resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
    for (std::size_t i = 0; i < channels.size(); ++i) {
      const tavelabi::ResourceAction& read = actions[i + 1];
      EXPECT_EQ(read.action, CCRUD::Read);
      EXPECT_EQ(read.path, graphicsPath(channels[i])) << Endpoint::kPath;
      EXPECT_EQ(read.sessionId, "client-2");
      ASSERT_EQ(read.resource.values.size(), 1u);
      EXPECT_EQ(read.resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue(), flag)
          << Endpoint::kPath;
    }
  }

  RecordingHost recording;
};

TEST_F(WsGraphicsReadsTest, MostGraphsReadTheirChannelsWithoutCountingAsActivity) {
  expectReads<WsGetSpectrum>({"exSpectrumAmplitude", "exSpectrumFrequency",
                              "exSpectrumMaskAmplitude", "exSpectrumMaskFrequency"},
                             true);
  expectReads<WsGetConstellation>({"exConstellationData"}, true);
  expectReads<WsGetLissajous>({"exLissajousData"}, true);
  expectReads<WsAmAmCorrection>({"exAmAmAmplitude"}, true);
  expectReads<WsAmPmCorrection>({"exAmPmAmplitude"}, true);
  expectReads<WsEqFrequencyResponse>({"exLmsFilterFreqDomain", "exLmsFreqVector"}, true);
  expectReads<WsAudioModVectors>({"exAudioModVector"}, true);
}

TEST_F(WsGraphicsReadsTest, SubCarriersAndPowerDistributionCountAsActivityAfterTheCheck) {
  expectReads<WsGetSubCarriers>({"exConstellationGroupData"}, false);
  expectReads<WsPowerDistribution>({"exWaterfallData"}, false);
}

TEST_F(WsGraphicsReadsTest, TheGeneratorRefusesADeadSession) {
  recording.fail(WsGetSpectrum::kPattern,
                 [] { throw tavelabi::NonExistentSessionException("no session"); });
  std::string message;
  Resource ignored;
  EXPECT_THROW(WsGetSpectrum::messageGenerator(upgradeRequest(), ignored, "dead", message,
                                               WsGetSpectrum::kPattern),
               tavelabi::NonExistentSessionException);
  EXPECT_TRUE(message.empty());
  EXPECT_EQ(recording.actions().size(), 1u);
}

Bytes randomBytes(std::mt19937& random, std::size_t size) {
  std::uniform_int_distribution<int> byte(0, 255);
  Bytes block(size);
  for (std::uint8_t& b : block) b = static_cast<std::uint8_t>(byte(random));
  return block;
}

// The pushes of the graphs of many points are written from the decoded numbers; each frame is
// the serialised message that the decoders' message forms make of the same blocks.
TEST_F(WsGraphicsEndpointsTest, EveryFrameOfAGraphOfPointsIsItsMessagesBytes) {
  std::mt19937 random(9);
  const Bytes amplitude = randomBytes(random, 2 * 3000);
  const Bytes frequency = randomBytes(random, 4 * 3000);
  const Bytes maskAmplitude = randomBytes(random, 4 * 20);
  const Bytes maskFrequency = randomBytes(random, 4 * 20);
  const Bytes pairs = randomBytes(random, 8 * 1000);
  const Bytes header = randomBytes(random, 14);
  const Bytes words = randomBytes(random, 4 * 1000);
  change("exSpectrumFrequency", channel(frequency));
  change("exSpectrumMaskAmplitude", channel(maskAmplitude));
  change("exSpectrumMaskFrequency", channel(maskFrequency));
  change("exSpectrumAmplitude", spectrumAmplitude(amplitude));
  change("exConstellationData", channel(pairs));
  change("exLissajousData", withHeader(pairs, header));
  change("exWaterfallData", channel(words));
  change("exAmAmAmplitude", channel(words));
  change("exAmPmAmplitude", channel(words));

  protobuf::Spectrum spectrum;
  spectrum.mutable_centerfrequency()->set_value(98.1);
  spectrum.mutable_centerfrequencyunits()->set_value("MHz");
  spectrum.mutable_frequencyspan()->set_value(0.4);
  spectrum.mutable_minvalue()->set_value(-100.0);
  spectrum.mutable_minvalueunits()->set_value("dBc");
  spectrum.mutable_maxvalue()->set_value(0.0);
  spectrum.mutable_maxvalueunits()->set_value("dBc");
  GraphicsDecoders::appendTrace(amplitude, frequency, *spectrum.mutable_spectrumpoints());
  GraphicsDecoders::appendTrace(maskAmplitude, maskFrequency, *spectrum.mutable_maskpoints());
  protobuf::Constellation constellation;
  GraphicsDecoders::appendFixedPointPairs(pairs, *constellation.mutable_points());
  protobuf::Lissajous lissajous;
  GraphicsDecoders::readLissajousHeader(header, lissajous);
  GraphicsDecoders::appendFixedPointPairs(pairs, *lissajous.mutable_points());

  WsGetSpectrum spectrumEndpoint;
  // Twice: the second client's push is the first one's bytes, shared.
  EXPECT_EQ(connect(spectrumEndpoint)->sent().at(0).data, spectrum.SerializeAsString());
  EXPECT_EQ(connect(spectrumEndpoint)->sent().at(0).data, spectrum.SerializeAsString());
  WsGetConstellation constellationEndpoint;
  EXPECT_EQ(connect(constellationEndpoint)->sent().at(0).data, constellation.SerializeAsString());
  WsGetLissajous lissajousEndpoint;
  EXPECT_EQ(connect(lissajousEndpoint)->sent().at(0).data, lissajous.SerializeAsString());
  WsPowerDistribution powerEndpoint;
  EXPECT_EQ(connect(powerEndpoint)->sent().at(0).data,
            GraphicsDecoders::powerDistribution(words)->SerializeAsString());
  WsAmAmCorrection amAmEndpoint;
  EXPECT_EQ(connect(amAmEndpoint)->sent().at(0).data,
            GraphicsDecoders::amAmCorrection(words)->SerializeAsString());
  WsAmPmCorrection amPmEndpoint;
  EXPECT_EQ(connect(amPmEndpoint)->sent().at(0).data,
            GraphicsDecoders::amPmCorrection(words)->SerializeAsString());
}

}  // namespace
}  // namespace halvor::kelo::test
