// Each graphics decoder on blocks of 1,024 to 65,536 entries, beside memcpy of a block of the same
// size: bytes per second of block read. The blocks are random, made once per size. The decoders
// are the ones the routes use: each block into fresh arrays of plain numbers.
//
// Usage: bench-graphics-decoders [Google Benchmark options], e.g.
//   --benchmark_repetitions=3 --benchmark_report_aggregates_only=true
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/AmPmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/AudioModVectorsHelperClass.h"
#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/EqFrequencyResponseHelperClass.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"

namespace halvor::kelo::bench {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes randomBlock(std::size_t bytes) {
  std::mt19937 random(static_cast<unsigned>(bytes));
  std::uniform_int_distribution<int> byte(0, 255);
  Bytes block(bytes);
  for (std::uint8_t& b : block) b = static_cast<std::uint8_t>(byte(random));
  return block;
}

std::size_t entries(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

void report(benchmark::State& state, std::size_t bytesPerRun) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytesPerRun));
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

// memcpy of `bytes` bytes.
void copyBlock(benchmark::State& state, std::size_t bytes) {
  const Bytes block = randomBlock(bytes);
  Bytes copy(block.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), block.data(), block.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
}

// memcpy of `bytesPerEntry` bytes per entry: the reference of each decoder of that entry size.
void Memcpy(benchmark::State& state, std::size_t bytesPerEntry) {
  copyBlock(state, entries(state) * bytesPerEntry);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

// One decoder of one block of `bytesPerEntry` bytes an entry; `decode` decodes it into fresh
// plain numbers (`Numbers`), as the routes do before they write their replies.
template <typename Numbers>
void Decoder(benchmark::State& state, std::size_t bytesPerEntry,
             void (*decode)(const Bytes& block, Numbers& numbers)) {
  const Bytes block = randomBlock(entries(state) * bytesPerEntry);
  for (auto _ : state) {
    Numbers numbers;
    decode(block, numbers);
    benchmark::DoNotOptimize(numbers);
    benchmark::ClobberMemory();
  }
  report(state, block.size());
}

// The trace: amplitudes of `amplitudeBytes` (2 in the narrow form, 4 in the wide one) beside
// 4-byte frequencies.
void Trace(benchmark::State& state, std::size_t amplitudeBytes) {
  const Bytes amplitude = randomBlock(entries(state) * amplitudeBytes);
  const Bytes frequency = randomBlock(entries(state) * 4);
  for (auto _ : state) {
    PointColumns points;
    GraphicsDecoders::decodeTrace(amplitude, frequency, points);
    benchmark::DoNotOptimize(points);
    benchmark::ClobberMemory();
  }
  report(state, amplitude.size() + frequency.size());
}

// The audio record has one size: 16 header bytes and 70 record bytes.
void AudioModVectors(benchmark::State& state) {
  const Bytes header = randomBlock(16);
  const Bytes record = randomBlock(70);
  for (auto _ : state) {
    benchmark::DoNotOptimize(GraphicsDecoders::audioModVectors(header, record));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * 86));
}

constexpr std::int64_t kFewest = 1024;
constexpr std::int64_t kMost = 65536;

BENCHMARK_CAPTURE(Memcpy, 2_bytes_an_entry, 2)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 4_bytes_an_entry, 4)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 6_bytes_an_entry, 6)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 8_bytes_an_entry, 8)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 16_bytes_an_entry, 16)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Trace, narrow, 2)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Trace, wide, 4)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, Constellation, 8, GraphicsDecoders::decodeFixedPointPairs)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, SubCarriers, 16, GraphicsDecoders::decodeSubCarrierGroups)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, PowerDistribution, 4, GraphicsDecoders::decodePowerDistribution)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, AmAmCorrection, 4, GraphicsDecoders::decodeAmAmCorrection)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, AmPmCorrection, 4, GraphicsDecoders::decodeAmPmCorrection)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, EqResponses, 2, GraphicsDecoders::decodeEqResponses)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Decoder, EqFrequencies, 4, GraphicsDecoders::decodeEqFrequencies)
    ->RangeMultiplier(4)
    ->Range(kFewest, kMost);
BENCHMARK(AudioModVectors);
BENCHMARK_CAPTURE(copyBlock, audio_record, 86);

}  // namespace
}  // namespace halvor::kelo::bench

BENCHMARK_MAIN();
