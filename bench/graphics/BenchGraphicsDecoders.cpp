// Each graphics decoder on blocks of 1,024 to 65,536 entries, beside memcpy of a block of the same
// size: bytes per second of block read. The blocks are random, made once per size.
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
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"

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

// memcpy of `bytesPerEntry` bytes per entry: the reference of each decoder of that entry size.
void Memcpy(benchmark::State& state, std::size_t bytesPerEntry) {
  const Bytes block = randomBlock(entries(state) * bytesPerEntry);
  Bytes copy(block.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), block.data(), block.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  report(state, block.size());
}

// The trace in its narrow form: 2-byte amplitudes beside 4-byte frequencies (6 bytes an entry).
void SpectrumNarrow(benchmark::State& state) {
  const Bytes amplitude = randomBlock(entries(state) * 2);
  const Bytes frequency = randomBlock(entries(state) * 4);
  for (auto _ : state) {
    protobuf::Spectrum spectrum;
    GraphicsDecoders::appendTrace(amplitude, frequency, *spectrum.mutable_spectrumpoints());
    benchmark::DoNotOptimize(spectrum);
  }
  report(state, amplitude.size() + frequency.size());
}

// The trace in its wide form: 4-byte words on both sides (8 bytes an entry).
void SpectrumWide(benchmark::State& state) {
  const Bytes amplitude = randomBlock(entries(state) * 4);
  const Bytes frequency = randomBlock(entries(state) * 4);
  for (auto _ : state) {
    protobuf::Spectrum spectrum;
    GraphicsDecoders::appendTrace(amplitude, frequency, *spectrum.mutable_spectrumpoints());
    benchmark::DoNotOptimize(spectrum);
  }
  report(state, amplitude.size() + frequency.size());
}

void Constellation(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 8);
  for (auto _ : state) {
    protobuf::Constellation constellation;
    GraphicsDecoders::appendFixedPointPairs(block, *constellation.mutable_points());
    benchmark::DoNotOptimize(constellation);
  }
  report(state, block.size());
}

void SubCarriers(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 16);
  for (auto _ : state) {
    protobuf::SubCarrierGroupList groups;
    GraphicsDecoders::appendSubCarrierGroups(block, *groups.mutable_groups());
    benchmark::DoNotOptimize(groups);
  }
  report(state, block.size());
}

void PowerDistribution(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 4);
  for (auto _ : state) benchmark::DoNotOptimize(GraphicsDecoders::powerDistribution(block));
  report(state, block.size());
}

void AmAmCorrection(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 4);
  for (auto _ : state) benchmark::DoNotOptimize(GraphicsDecoders::amAmCorrection(block));
  report(state, block.size());
}

void AmPmCorrection(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 4);
  for (auto _ : state) benchmark::DoNotOptimize(GraphicsDecoders::amPmCorrection(block));
  report(state, block.size());
}

void EqResponses(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 2);
  for (auto _ : state) {
    protobuf::EqFrequencyResponse response;
    GraphicsDecoders::appendEqResponses(block, *response.mutable_responses());
    benchmark::DoNotOptimize(response);
  }
  report(state, block.size());
}

void EqFrequencies(benchmark::State& state) {
  const Bytes block = randomBlock(entries(state) * 4);
  for (auto _ : state) {
    protobuf::EqFrequencyResponse response;
    GraphicsDecoders::appendEqFrequencies(block, *response.mutable_frequencies());
    benchmark::DoNotOptimize(response);
  }
  report(state, block.size());
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

void MemcpyAudioRecord(benchmark::State& state) {
  const Bytes block = randomBlock(86);
  Bytes copy(block.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), block.data(), block.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
}

constexpr std::int64_t kFewest = 1024;
constexpr std::int64_t kMost = 65536;

BENCHMARK_CAPTURE(Memcpy, 2_bytes_an_entry, 2)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 4_bytes_an_entry, 4)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 6_bytes_an_entry, 6)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 8_bytes_an_entry, 8)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK_CAPTURE(Memcpy, 16_bytes_an_entry, 16)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(SpectrumNarrow)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(SpectrumWide)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(Constellation)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(SubCarriers)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(PowerDistribution)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(AmAmCorrection)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(AmPmCorrection)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(EqResponses)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(EqFrequencies)->RangeMultiplier(4)->Range(kFewest, kMost);
BENCHMARK(AudioModVectors);
BENCHMARK(MemcpyAudioRecord);

}  // namespace
}  // namespace halvor::kelo::bench

BENCHMARK_MAIN();
