// Every variant of the decoders' loops that this processor runs (baseline, AVX2, AVX-512F),
// called directly, against the reference decoders: the same bits for every value, on random
// blocks of many lengths (so that each vector loop's remainder is taken), every 16-bit word and
// the extreme 32-bit words.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsDecoderLoops.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"
#include "unit/handlers/http/graphics/ReferenceDecoders.h"

namespace halvor::kelo::test {
namespace {

using Loops = GraphicsDecoderLoops;
using Variant = GraphicsDecoderLoops::Variant;

std::vector<Variant> runnableVariants() {
  std::vector<Variant> runnable;
  for (const Variant which : {Variant::Baseline, Variant::Avx2, Variant::Avx512}) {
    if (Loops::variant(which) != nullptr) runnable.push_back(which);
  }
  return runnable;
}

// Every 16-bit word once.
Bytes everySixteenBitWord() {
  Bytes block;
  for (std::uint32_t word = 0; word <= 0xFFFFU; ++word)
    put16(block, static_cast<std::uint16_t>(word));
  return block;
}

// The extreme 32-bit words, eight times over.
Bytes extremeWords() {
  Bytes block;
  for (int round = 0; round < 8; ++round) {
    for (const std::uint32_t word :
         {0x00000000U, 0x00000001U, 0x7FFFFFFFU, 0x80000000U, 0x80000001U, 0xFFFFFFFFU, 0x0000FFFFU,
          0x00008000U, 0x00007FFFU, 0xFFFF0000U, 0x0CCCCCCDU, 0x00000064U}) {
      put32(block, word);
    }
  }
  return block;
}

// The blocks to decode: random ones of 0 to 70 and of 1,000 to 1,100 entries of 16 bytes (every
// decoder cuts its whole entries from them), every 16-bit word and the extreme words.
std::vector<Bytes> blocks() {
  std::mt19937 random(15);
  std::vector<Bytes> made;
  for (std::size_t entries = 0; entries <= 70; ++entries) {
    made.push_back(randomBlock(random, entries * 16));
  }
  for (std::size_t entries = 1000; entries <= 1100; entries += 7) {
    made.push_back(randomBlock(random, entries * 16));
  }
  made.push_back(everySixteenBitWord());
  made.push_back(extremeWords());
  return made;
}

// The first `bytes` bytes of a block.
Bytes head(const Bytes& block, std::size_t bytes) {
  return Bytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(bytes));
}

template <class Message>
std::string pointsMessage(const PointColumns& columns) {
  Message message;
  GraphicsDecoders::appendPoints(columns, *message.mutable_points());
  return message.SerializeAsString();
}

// Decodes the first whole entries of `block` with one variant's loops, as messages' bytes.
struct Decoded {
  std::string narrowTrace, wideTrace, pairs, groups, power, amAm, amPm, eq;
};

Decoded decodeWith(const Loops::Table& loops, const Bytes& block) {
  Decoded decoded;
  const std::uint8_t* b = block.data();
  PointColumns columns;
  // The trace: amplitudes in the block's first part, frequencies after them.
  std::size_t n = block.size() / 6;
  columns.resize(n);
  loops.narrowTrace(b, b + 2 * n, n, columns.y.data(), columns.x.data());
  protobuf::Spectrum spectrum;
  GraphicsDecoders::appendPoints(columns, *spectrum.mutable_spectrumpoints());
  decoded.narrowTrace = spectrum.SerializeAsString();
  n = block.size() / 8;
  columns.resize(n);
  loops.wideTrace(b, b + 4 * n, n, columns.y.data(), columns.x.data());
  spectrum.Clear();
  GraphicsDecoders::appendPoints(columns, *spectrum.mutable_spectrumpoints());
  decoded.wideTrace = spectrum.SerializeAsString();
  n = block.size() / 8;
  columns.resize(n);
  loops.fixedPointPairs(b, n, columns.x.data(), columns.y.data());
  decoded.pairs = pointsMessage<protobuf::Constellation>(columns);
  SubCarrierColumns groups;
  groups.resize(block.size() / 16);
  loops.subCarrierGroups(b, groups.size(), groups.groupIndex.data(), groups.groupValue.data(),
                         groups.firstValue.data(), groups.secondValue.data());
  protobuf::SubCarrierGroupList list;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    protobuf::SubCarrierGroup* group = list.add_groups();
    group->mutable_groupindex()->set_value(groups.groupIndex[i]);
    group->mutable_groupvalue()->set_value(groups.groupValue[i]);
    group->mutable_firstvalue()->set_value(groups.firstValue[i]);
    group->mutable_secondvalue()->set_value(groups.secondValue[i]);
  }
  decoded.groups = list.SerializeAsString();
  n = block.size() / 4;
  columns.resize(n);
  loops.powerDistribution(b, n, columns.x.data(), columns.y.data());
  decoded.power = pointsMessage<protobuf::PowerDistribution>(columns);
  loops.amAmCorrection(b, n, columns.x.data(), columns.y.data());
  decoded.amAm = pointsMessage<protobuf::AmAmCorrection>(columns);
  loops.amPmCorrection(b, n, columns.x.data(), columns.y.data());
  decoded.amPm = pointsMessage<protobuf::AmPmCorrection>(columns);
  // The equaliser: responses from the first half of the block, frequencies from the whole.
  std::vector<double> responses(block.size() / 2);
  loops.eqResponses(b, responses.size(), responses.data());
  std::vector<std::int32_t> frequencies(block.size() / 4);
  loops.eqFrequencies(b, frequencies.size(), frequencies.data());
  protobuf::EqFrequencyResponse eq;
  for (const std::int32_t frequency : frequencies) eq.add_frequencies()->set_value(frequency);
  for (const double response : responses) eq.add_responses()->set_value(response);
  decoded.eq = eq.SerializeAsString();
  return decoded;
}

// The same whole entries through the reference decoders.
Decoded decodeWithReference(const Bytes& block) {
  Decoded decoded;
  std::size_t n = block.size() / 6;
  protobuf::Spectrum spectrum;
  ReferenceDecoders::appendTrace(head(block, 2 * n),
                                 Bytes(block.begin() + 2 * n, block.begin() + 6 * n),
                                 *spectrum.mutable_spectrumpoints());
  decoded.narrowTrace = spectrum.SerializeAsString();
  n = block.size() / 8;
  spectrum.Clear();
  ReferenceDecoders::appendTrace(head(block, 4 * n),
                                 Bytes(block.begin() + 4 * n, block.begin() + 8 * n),
                                 *spectrum.mutable_spectrumpoints());
  decoded.wideTrace = spectrum.SerializeAsString();
  protobuf::Constellation pairs;
  ReferenceDecoders::appendFixedPointPairs(head(block, block.size() / 8 * 8),
                                           *pairs.mutable_points());
  decoded.pairs = pairs.SerializeAsString();
  protobuf::SubCarrierGroupList list;
  ReferenceDecoders::appendSubCarrierGroups(head(block, block.size() / 16 * 16),
                                            *list.mutable_groups());
  decoded.groups = list.SerializeAsString();
  const Bytes whole4 = head(block, block.size() / 4 * 4);
  decoded.power = ReferenceDecoders::powerDistribution(whole4)->SerializeAsString();
  decoded.amAm = ReferenceDecoders::amAmCorrection(whole4)->SerializeAsString();
  decoded.amPm = ReferenceDecoders::amPmCorrection(whole4)->SerializeAsString();
  protobuf::EqFrequencyResponse eq;
  ReferenceDecoders::appendEqFrequencies(whole4, *eq.mutable_frequencies());
  ReferenceDecoders::appendEqResponses(head(block, block.size() / 2 * 2), *eq.mutable_responses());
  decoded.eq = eq.SerializeAsString();
  return decoded;
}

void expectSame(const Decoded& mine, const Decoded& reference) {
  EXPECT_EQ(mine.narrowTrace, reference.narrowTrace) << "narrow trace";
  EXPECT_EQ(mine.wideTrace, reference.wideTrace) << "wide trace";
  EXPECT_EQ(mine.pairs, reference.pairs) << "fixed-point pairs";
  EXPECT_EQ(mine.groups, reference.groups) << "sub-carrier groups";
  EXPECT_EQ(mine.power, reference.power) << "power distribution";
  EXPECT_EQ(mine.amAm, reference.amAm) << "AM-AM";
  EXPECT_EQ(mine.amPm, reference.amPm) << "AM-PM";
  EXPECT_EQ(mine.eq, reference.eq) << "equaliser";
}

TEST(GraphicsDecoderLoopsTest, EveryVariantThisProcessorRunsGivesTheReferenceBits) {
  const std::vector<Variant> runnable = runnableVariants();
  ASSERT_FALSE(runnable.empty());
  EXPECT_EQ(runnable.front(), Variant::Baseline);
  for (const Bytes& block : blocks()) {
    const Decoded reference = decodeWithReference(block);
    for (const Variant which : runnable) {
      SCOPED_TRACE(std::string(Loops::name(which)) + ", " + std::to_string(block.size()) +
                   " bytes");
      expectSame(decodeWith(*Loops::variant(which), block), reference);
    }
  }
  // Which variants were held to the reference, in the test's report.
  std::string names;
  for (const Variant which : runnable) names += std::string(Loops::name(which)) + " ";
  RecordProperty("variants", names);
}

TEST(GraphicsDecoderLoopsTest, TheActiveLoopsAreTheWidestVariantThisProcessorRuns) {
  const Variant active = Loops::activeVariant();
  EXPECT_EQ(&Loops::active(), Loops::variant(active));
  const std::vector<Variant> runnable = runnableVariants();
  EXPECT_EQ(active, runnable.back());
}

TEST(GraphicsDecoderLoopsTest, AVariantThatTheProcessorCannotRunIsNotOffered) {
  // The baseline runs everywhere; a wider variant is offered exactly when the processor has it.
  EXPECT_NE(Loops::variant(Variant::Baseline), nullptr);
#if defined(__x86_64__)
  EXPECT_EQ(Loops::variant(Variant::Avx2) != nullptr, __builtin_cpu_supports("avx2") != 0);
  EXPECT_EQ(Loops::variant(Variant::Avx512) != nullptr, __builtin_cpu_supports("avx512f") != 0);
#endif
}

}  // namespace
}  // namespace halvor::kelo::test
