// The decoders into plain numbers and the replies written from them, held to the first decoders
// (ReferenceDecoders: each entry through a ByteVectorReader, a message per entry) and to
// protobuf's own printer and serialiser, on hand-made and random blocks.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"
#include "unit/handlers/http/graphics/ReferenceDecoders.h"

namespace halvor::kelo::test {
namespace {

using Points = google::protobuf::RepeatedPtrField<protobuf::Point>;

// What a decoder gave: the bytes of its message, and the text of the exception it threw, if any.
struct Outcome {
  std::string bytes;
  std::string thrown;
  bool operator==(const Outcome&) const = default;
};

template <class Message>
Outcome outcomeOf(const std::function<void(Message&)>& decode) {
  Message message;
  Outcome outcome;
  try {
    decode(message);
  } catch (const std::out_of_range& error) {
    outcome.thrown = error.what();
  }
  outcome.bytes = message.SerializeAsString();
  return outcome;
}

template <class Message>
Outcome outcomeOfShared(const std::function<std::shared_ptr<Message>()>& decode) {
  Outcome outcome;
  try {
    outcome.bytes = decode()->SerializeAsString();
  } catch (const std::out_of_range& error) {
    outcome.thrown = error.what();
  }
  return outcome;
}

// Blocks of every length from 0 to 80 bytes (whole entries and cut-off ones), then longer ones,
// each with random bytes, and blocks of the extreme words: all zero bits, all one bits, only the
// sign bits of each 16- and 32-bit word set.
std::vector<Bytes> blocks() {
  std::mt19937 random(20261123);
  std::vector<Bytes> made;
  for (std::size_t size = 0; size <= 80; ++size) made.push_back(randomBlock(random, size));
  for (std::size_t size : {1024U, 4096U, 4099U, 65536U}) made.push_back(randomBlock(random, size));
  made.push_back(Bytes(64, 0x00));
  made.push_back(Bytes(64, 0xFF));
  made.push_back(words16({0x8000, 0x8000, 0x7FFF, 0x0001, 0xFFFF, 0x8000, 0x0000, 0x8000}));
  made.push_back(words32({0x80000000U, 0x7FFFFFFFU, 0xFFFFFFFFU, 0x00000001U, 0x80000000U,
                          0x00000000U, 0x00008000U, 0x0000FFFFU}));
  return made;
}

TEST(GraphicsDecodersEquivalenceTest, TheTraceGivesTheReferencePointsOnEveryPairOfLengths) {
  std::mt19937 random(7);
  const std::vector<Bytes> all = blocks();
  int compared = 0;
  for (const Bytes& amplitude : all) {
    // The two forms, a frequency block one byte longer, and lengths that fit neither.
    for (const std::size_t frequencyBytes :
         {amplitude.size() * 2, amplitude.size() * 2 + 1, amplitude.size(), amplitude.size() + 3}) {
      const Bytes frequency = randomBlock(random, frequencyBytes);
      const Outcome mine = outcomeOf<protobuf::Spectrum>([&](protobuf::Spectrum& m) {
        GraphicsDecoders::appendTrace(amplitude, frequency, *m.mutable_spectrumpoints());
      });
      const Outcome reference = outcomeOf<protobuf::Spectrum>([&](protobuf::Spectrum& m) {
        ReferenceDecoders::appendTrace(amplitude, frequency, *m.mutable_spectrumpoints());
      });
      EXPECT_EQ(mine, reference) << amplitude.size() << " and " << frequencyBytes << " bytes";
      ++compared;
    }
  }
  EXPECT_GT(compared, 300);
}

// Every single-block decoder against its reference, on every block.
TEST(GraphicsDecodersEquivalenceTest, EverySingleBlockDecoderGivesTheReferenceMessage) {
  for (const Bytes& block : blocks()) {
    SCOPED_TRACE(std::to_string(block.size()) + " bytes");
    EXPECT_EQ(outcomeOf<protobuf::Constellation>([&](protobuf::Constellation& m) {
                GraphicsDecoders::appendFixedPointPairs(block, *m.mutable_points());
              }),
              outcomeOf<protobuf::Constellation>([&](protobuf::Constellation& m) {
                ReferenceDecoders::appendFixedPointPairs(block, *m.mutable_points());
              }));
    EXPECT_EQ(outcomeOf<protobuf::SubCarrierGroupList>([&](protobuf::SubCarrierGroupList& m) {
                GraphicsDecoders::appendSubCarrierGroups(block, *m.mutable_groups());
              }),
              outcomeOf<protobuf::SubCarrierGroupList>([&](protobuf::SubCarrierGroupList& m) {
                ReferenceDecoders::appendSubCarrierGroups(block, *m.mutable_groups());
              }));
    EXPECT_EQ(outcomeOf<protobuf::Lissajous>(
                  [&](protobuf::Lissajous& m) { GraphicsDecoders::readLissajousHeader(block, m); }),
              outcomeOf<protobuf::Lissajous>([&](protobuf::Lissajous& m) {
                ReferenceDecoders::readLissajousHeader(block, m);
              }));
    EXPECT_EQ(outcomeOfShared<protobuf::PowerDistribution>(
                  [&] { return GraphicsDecoders::powerDistribution(block); }),
              outcomeOfShared<protobuf::PowerDistribution>(
                  [&] { return ReferenceDecoders::powerDistribution(block); }));
    EXPECT_EQ(outcomeOfShared<protobuf::AmAmCorrection>(
                  [&] { return GraphicsDecoders::amAmCorrection(block); }),
              outcomeOfShared<protobuf::AmAmCorrection>(
                  [&] { return ReferenceDecoders::amAmCorrection(block); }));
    EXPECT_EQ(outcomeOfShared<protobuf::AmPmCorrection>(
                  [&] { return GraphicsDecoders::amPmCorrection(block); }),
              outcomeOfShared<protobuf::AmPmCorrection>(
                  [&] { return ReferenceDecoders::amPmCorrection(block); }));
    EXPECT_EQ(outcomeOf<protobuf::EqFrequencyResponse>([&](protobuf::EqFrequencyResponse& m) {
                GraphicsDecoders::appendEqResponses(block, *m.mutable_responses());
                GraphicsDecoders::appendEqFrequencies(block, *m.mutable_frequencies());
              }),
              outcomeOf<protobuf::EqFrequencyResponse>([&](protobuf::EqFrequencyResponse& m) {
                ReferenceDecoders::appendEqResponses(block, *m.mutable_responses());
                ReferenceDecoders::appendEqFrequencies(block, *m.mutable_frequencies());
              }));
  }
}

TEST(GraphicsDecodersEquivalenceTest, ACutOffEntryThrowsTheReadersOwnText) {
  PointColumns points;
  try {
    GraphicsDecoders::decodeFixedPointPairs(Bytes(13, 1), points);
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(),
                 "ByteVectorReader: reading 4 bytes at position 12 passes the end 13");
  }
  // The whole entry before it is decoded.
  EXPECT_EQ(points.size(), 1U);
}

// A Spectrum with the scale set and both lists filled as getSpectrum fills them.
protobuf::Spectrum scaleOnly() {
  protobuf::Spectrum scale;
  scale.mutable_centerfrequency()->set_value(98.1);
  scale.mutable_centerfrequencyunits()->set_value("MHz");
  scale.mutable_frequencyspan()->set_value(0.4);
  scale.mutable_minvalue()->set_value(-100.0);
  scale.mutable_minvalueunits()->set_value("dBc");
  scale.mutable_maxvalue()->set_value(0.0);
  scale.mutable_maxvalueunits()->set_value("dB");
  return scale;
}

SpectrumHelperClass::Decoded decodedSpectrum(const Bytes& amplitude, const Bytes& frequency,
                                             const Bytes& maskAmplitude,
                                             const Bytes& maskFrequency) {
  SpectrumHelperClass::Decoded decoded;
  decoded.scale = scaleOnly();
  GraphicsDecoders::decodeTrace(amplitude, frequency, decoded.trace);
  GraphicsDecoders::decodeTrace(maskAmplitude, maskFrequency, decoded.mask);
  return decoded;
}

protobuf::Spectrum referenceSpectrum(const Bytes& amplitude, const Bytes& frequency,
                                     const Bytes& maskAmplitude, const Bytes& maskFrequency) {
  protobuf::Spectrum spectrum = scaleOnly();
  ReferenceDecoders::appendTrace(amplitude, frequency, *spectrum.mutable_spectrumpoints());
  ReferenceDecoders::appendTrace(maskAmplitude, maskFrequency, *spectrum.mutable_maskpoints());
  return spectrum;
}

TEST(GraphicsRepliesEquivalenceTest, TheSpectrumTextAndBytesAreProtobufsForRandomTraces) {
  std::mt19937 random(11);
  for (const std::size_t entries : {0U, 1U, 2U, 10U, 1000U, 8192U}) {
    for (const bool narrow : {true, false}) {
      SCOPED_TRACE(std::to_string(entries) + (narrow ? " narrow" : " wide"));
      const Bytes amplitude = randomBlock(random, entries * (narrow ? 2 : 4));
      const Bytes frequency = randomBlock(random, entries * 4);
      // The mask in the other form, or empty.
      const Bytes maskAmplitude = randomBlock(random, narrow ? 40 : 0);
      const Bytes maskFrequency = randomBlock(random, narrow ? 40 : 0);
      const SpectrumHelperClass::Decoded decoded =
          decodedSpectrum(amplitude, frequency, maskAmplitude, maskFrequency);
      const protobuf::Spectrum reference =
          referenceSpectrum(amplitude, frequency, maskAmplitude, maskFrequency);
      EXPECT_EQ(SpectrumHelperClass::json(decoded), JsonOptions::protobufJson(reference));
      EXPECT_EQ(SpectrumHelperClass::wire(decoded), reference.SerializeAsString());
    }
  }
}

TEST(GraphicsRepliesEquivalenceTest, AWholeBlockOfZeroWordsGivesEmptyWrappersAsProtobufDoes) {
  const SpectrumHelperClass::Decoded decoded =
      decodedSpectrum(Bytes(8, 0), Bytes(16, 0), Bytes(), Bytes());
  const protobuf::Spectrum reference = referenceSpectrum(Bytes(8, 0), Bytes(16, 0), {}, {});
  EXPECT_EQ(SpectrumHelperClass::json(decoded), JsonOptions::protobufJson(reference));
  EXPECT_EQ(SpectrumHelperClass::wire(decoded), reference.SerializeAsString());
}

// Numbers the decoders never make, written as protobuf writes them all the same.
std::vector<double> extremeNumbers() {
  using Limits = std::numeric_limits<double>;
  return {0.0,
          -0.0,
          1.0,
          -1.0,
          0.1,
          1e15,
          -1e15,
          1e15 + 1,
          123456789012345678.0,
          1e300,
          -1e-300,
          Limits::denorm_min(),
          -Limits::denorm_min(),
          Limits::min(),
          Limits::max(),
          Limits::lowest(),
          Limits::epsilon(),
          2147483647.0,
          -2147483648.0,
          5.960464477539063e-08,
          655.35,
          1.0 / 3.0};
}

PointColumns columnsOf(const std::vector<double>& ys, const std::vector<double>& xs) {
  PointColumns columns;
  columns.y.assign(ys.begin(), ys.end());
  columns.x.assign(xs.begin(), xs.end());
  return columns;
}

protobuf::Constellation constellationOf(const PointColumns& columns) {
  protobuf::Constellation message;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    protobuf::Point* point = message.add_points();
    point->mutable_y()->set_value(columns.y[i]);
    point->mutable_x()->set_value(columns.x[i]);
  }
  return message;
}

TEST(GraphicsRepliesEquivalenceTest, ExtremeFiniteNumbersAreWrittenAsProtobufWritesThem) {
  std::vector<double> ys = extremeNumbers();
  std::vector<double> xs(ys.rbegin(), ys.rend());
  std::mt19937_64 random(3);
  // Random bit patterns: every exponent, finite ones only.
  for (int i = 0; i < 2000; ++i) {
    double y = 0;
    double x = 0;
    do {
      const std::uint64_t bits = random();
      std::memcpy(&y, &bits, sizeof(y));
    } while (!std::isfinite(y));
    do {
      const std::uint64_t bits = random();
      std::memcpy(&x, &bits, sizeof(x));
    } while (!std::isfinite(x));
    ys.push_back(y);
    xs.push_back(x);
  }
  const PointColumns columns = columnsOf(ys, xs);
  const protobuf::Constellation reference = constellationOf(columns);
  const protobuf::Constellation rest;
  EXPECT_EQ(PointListWriter::json({{1, columns}}, rest), JsonOptions::protobufJson(reference));
  EXPECT_EQ(PointListWriter::wire({{1, columns}}, rest), reference.SerializeAsString());
}

TEST(GraphicsRepliesEquivalenceTest, NumbersThatAreNotFiniteGoToProtobufsPrinter) {
  using Limits = std::numeric_limits<double>;
  const PointColumns columns =
      columnsOf({1.0, Limits::quiet_NaN(), Limits::infinity()}, {-Limits::infinity(), 2.0, 0.5});
  const protobuf::Constellation reference = constellationOf(columns);
  const protobuf::Constellation rest;
  EXPECT_EQ(PointListWriter::json({{1, columns}}, rest), JsonOptions::protobufJson(reference));
  EXPECT_EQ(PointListWriter::wire({{1, columns}}, rest), reference.SerializeAsString());
}

TEST(GraphicsRepliesEquivalenceTest, AListThatIsNoListOfPointsIsRefused) {
  const PointColumns columns = columnsOf({1.0}, {2.0});
  EXPECT_THROW((void)PointListWriter::json({{4, columns}}, protobuf::Spectrum()), std::logic_error);
  EXPECT_THROW((void)PointListWriter::wire({{9, columns}}, protobuf::Spectrum()), std::logic_error);
}

}  // namespace
}  // namespace halvor::kelo::test
