#include "kelo/handlers/http/graphics/GraphicsDecoderLoops.h"

#include <cstring>

#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

// No contraction into fused multiply-adds: a variant's last bits must be the baseline's. The
// loops below hold no multiply followed by an add, and the file is built with
// -ffp-contract=off besides (see src/CMakeLists.txt); for clang the pragma says the same.
#if defined(__clang__)
#pragma clang fp contract(off)
#endif

namespace halvor::kelo {

namespace {

using Variant = GraphicsDecoderLoops::Variant;

template <class Number>
inline Number load(const std::uint8_t* at) {
  Number value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

// An unsigned word as a double, exactly: the word as the low mantissa bits of 2^52, less 2^52.
// Below AVX-512 no instruction converts unsigned words, but this one vectorises.
inline double unsignedAsDouble(std::uint32_t word) {
  const std::uint64_t bits = 0x4330000000000000ULL | word;
  double value;
  std::memcpy(&value, &bits, sizeof(value));
  return value - 4503599627370496.0;
}

// The loop bodies, inlined into each variant's entry points below, which the compiler builds
// for that variant's instructions. kNativeUnsigned: the variant converts unsigned words itself.
template <bool kNativeUnsigned>
inline __attribute__((always_inline)) double wordAsDouble(std::uint32_t word) {
  if constexpr (kNativeUnsigned) {
    return static_cast<double>(word);
  } else {
    return unsignedAsDouble(word);
  }
}

inline __attribute__((always_inline)) void narrowTraceBody(const std::uint8_t* __restrict a,
                                                           const std::uint8_t* __restrict f,
                                                           std::size_t n, double* __restrict y,
                                                           double* __restrict x) {
  for (std::size_t i = 0; i < n; ++i) y[i] = load<std::int16_t>(a + 2 * i);
  // Taken signed: a word of 2^31 or more comes out negative.
  for (std::size_t i = 0; i < n; ++i) x[i] = load<std::int32_t>(f + 4 * i);
}

inline __attribute__((always_inline)) void wideTraceBody(const std::uint8_t* __restrict a,
                                                         const std::uint8_t* __restrict f,
                                                         std::size_t n, double* __restrict y,
                                                         double* __restrict x) {
  // A wide amplitude keeps only its low half, so it never leaves the 16-bit range.
  for (std::size_t i = 0; i < n; ++i) {
    y[i] = static_cast<std::int16_t>(load<std::uint32_t>(a + 4 * i) & 0xFFFFU);
  }
  for (std::size_t i = 0; i < n; ++i) x[i] = load<std::int32_t>(f + 4 * i);
}

inline __attribute__((always_inline)) void fixedPointPairsBody(const std::uint8_t* __restrict b,
                                                               std::size_t n, double* __restrict x,
                                                               double* __restrict y) {
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = load<std::int32_t>(b + 8 * i) * GraphicsDecoders::kFixedPoint24;
    y[i] = load<std::int32_t>(b + 8 * i + 4) * GraphicsDecoders::kFixedPoint24;
  }
}

inline __attribute__((always_inline)) void subCarrierGroupsBody(
    const std::uint8_t* __restrict b, std::size_t n, std::int32_t* __restrict groupIndex,
    float* __restrict groupValue, float* __restrict firstValue, float* __restrict secondValue) {
  // The head of an entry (1, 1 and 2 bytes) is passed over. Float arithmetic on purpose: these
  // values are float fields, scaled as floats.
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint8_t* entry = b + 16 * i;
    firstValue[i] = static_cast<float>(load<std::int32_t>(entry + 4)) / 1000.0F;
    secondValue[i] = static_cast<float>(load<std::int32_t>(entry + 8)) / 1000.0F;
    groupValue[i] = static_cast<float>(load<std::int16_t>(entry + 12)) / 100.0F;
    groupIndex[i] = load<std::int16_t>(entry + 14);
  }
}

inline __attribute__((always_inline)) void powerDistributionBody(const std::uint8_t* __restrict b,
                                                                 std::size_t n,
                                                                 double* __restrict x,
                                                                 double* __restrict y) {
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = load<std::uint16_t>(b + 4 * i) / 100.0;
    y[i] = load<std::int16_t>(b + 4 * i + 2);
  }
}

// x = the entry's index. The index is converted as a 32-bit number within chunks (whose start,
// a whole number far below 2^53, is added exactly), since a 64-bit one has no vector conversion.
inline __attribute__((always_inline)) void indicesBody(std::size_t n, double* __restrict x) {
  constexpr std::size_t kChunk = std::size_t{1} << 30;
  for (std::size_t start = 0; start < n; start += kChunk) {
    const std::size_t end = n - start < kChunk ? n : start + kChunk;
    const double base = static_cast<double>(start);
    const auto count = static_cast<std::int32_t>(end - start);
    double* chunk = x + start;
    for (std::int32_t j = 0; j < count; ++j) chunk[j] = base + static_cast<double>(j);
  }
}

template <bool kNativeUnsigned>
inline __attribute__((always_inline)) void amAmCorrectionBody(const std::uint8_t* __restrict b,
                                                              std::size_t n, double* __restrict x,
                                                              double* __restrict y) {
  indicesBody(n, x);
  // Unsigned: the top half of the range stays positive.
  for (std::size_t i = 0; i < n; ++i) {
    y[i] = wordAsDouble<kNativeUnsigned>(load<std::uint32_t>(b + 4 * i)) *
           GraphicsDecoders::kAmAmScale;
  }
}

template <bool kNativeUnsigned>
inline __attribute__((always_inline)) void amPmCorrectionBody(const std::uint8_t* __restrict b,
                                                              std::size_t n, double* __restrict x,
                                                              double* __restrict y) {
  indicesBody(n, x);
  for (std::size_t i = 0; i < n; ++i) {
    y[i] = wordAsDouble<kNativeUnsigned>(load<std::uint32_t>(b + 4 * i)) /
           GraphicsDecoders::kAmPmWordsPerDegree;
  }
}

inline __attribute__((always_inline)) void eqResponsesBody(const std::uint8_t* __restrict b,
                                                           std::size_t n,
                                                           double* __restrict responses) {
  for (std::size_t i = 0; i < n; ++i) responses[i] = load<std::int16_t>(b + 2 * i) / 100.0;
}

inline __attribute__((always_inline)) void eqFrequenciesBody(const std::uint8_t* __restrict b,
                                                             std::size_t n,
                                                             std::int32_t* __restrict frequencies) {
  for (std::size_t i = 0; i < n; ++i) frequencies[i] = load<std::int32_t>(b + 4 * i);
}

// One variant's entry points: the bodies above built for the instructions of `TARGET`
// (an empty attribute for the baseline). NATIVE says whether it converts unsigned words itself.
#define KELO_GRAPHICS_LOOPS(NS, TARGET, NATIVE)                                                   \
  namespace NS {                                                                                  \
  TARGET void narrowTrace(const std::uint8_t* a, const std::uint8_t* f, std::size_t n, double* y, \
                          double* x) {                                                            \
    narrowTraceBody(a, f, n, y, x);                                                               \
  }                                                                                               \
  TARGET void wideTrace(const std::uint8_t* a, const std::uint8_t* f, std::size_t n, double* y,   \
                        double* x) {                                                              \
    wideTraceBody(a, f, n, y, x);                                                                 \
  }                                                                                               \
  TARGET void fixedPointPairs(const std::uint8_t* b, std::size_t n, double* x, double* y) {       \
    fixedPointPairsBody(b, n, x, y);                                                              \
  }                                                                                               \
  TARGET void subCarrierGroups(const std::uint8_t* b, std::size_t n, std::int32_t* groupIndex,    \
                               float* groupValue, float* firstValue, float* secondValue) {        \
    subCarrierGroupsBody(b, n, groupIndex, groupValue, firstValue, secondValue);                  \
  }                                                                                               \
  TARGET void powerDistribution(const std::uint8_t* b, std::size_t n, double* x, double* y) {     \
    powerDistributionBody(b, n, x, y);                                                            \
  }                                                                                               \
  TARGET void amAmCorrection(const std::uint8_t* b, std::size_t n, double* x, double* y) {        \
    amAmCorrectionBody<NATIVE>(b, n, x, y);                                                       \
  }                                                                                               \
  TARGET void amPmCorrection(const std::uint8_t* b, std::size_t n, double* x, double* y) {        \
    amPmCorrectionBody<NATIVE>(b, n, x, y);                                                       \
  }                                                                                               \
  TARGET void eqResponses(const std::uint8_t* b, std::size_t n, double* responses) {              \
    eqResponsesBody(b, n, responses);                                                             \
  }                                                                                               \
  TARGET void eqFrequencies(const std::uint8_t* b, std::size_t n, std::int32_t* frequencies) {    \
    eqFrequenciesBody(b, n, frequencies);                                                         \
  }                                                                                               \
  constexpr GraphicsDecoderLoops::Table kTable{                                                   \
      narrowTrace,    wideTrace,      fixedPointPairs, subCarrierGroups, powerDistribution,       \
      amAmCorrection, amPmCorrection, eqResponses,     eqFrequencies};                            \
  }

KELO_GRAPHICS_LOOPS(baseline, , false)
#if defined(__x86_64__)
KELO_GRAPHICS_LOOPS(avx2, __attribute__((target("avx2"))), false)
KELO_GRAPHICS_LOOPS(avx512, __attribute__((target("avx512f"))), true)
#endif

#undef KELO_GRAPHICS_LOOPS

bool runs(Variant which) {
  switch (which) {
    case Variant::Baseline:
      return true;
#if defined(__x86_64__)
    case Variant::Avx2:
      return __builtin_cpu_supports("avx2");
    case Variant::Avx512:
      return __builtin_cpu_supports("avx512f");
#endif
    default:
      return false;
  }
}

Variant widest() {
  if (runs(Variant::Avx512)) return Variant::Avx512;
  if (runs(Variant::Avx2)) return Variant::Avx2;
  return Variant::Baseline;
}

}  // namespace

const GraphicsDecoderLoops::Table* GraphicsDecoderLoops::variant(Variant which) {
  if (!runs(which)) return nullptr;
  switch (which) {
#if defined(__x86_64__)
    case Variant::Avx2:
      return &avx2::kTable;
    case Variant::Avx512:
      return &avx512::kTable;
#endif
    default:
      return &baseline::kTable;
  }
}

GraphicsDecoderLoops::Variant GraphicsDecoderLoops::activeVariant() {
  static const Variant chosen = widest();
  return chosen;
}

const GraphicsDecoderLoops::Table& GraphicsDecoderLoops::active() {
  static const Table* const chosen = variant(activeVariant());
  return *chosen;
}

const char* GraphicsDecoderLoops::name(Variant which) {
  switch (which) {
    case Variant::Avx2:
      return "AVX2";
    case Variant::Avx512:
      return "AVX-512F";
    default:
      return "baseline";
  }
}

}  // namespace halvor::kelo
