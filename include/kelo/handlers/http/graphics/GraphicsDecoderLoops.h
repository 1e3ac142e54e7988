#pragma once

#include <cstddef>
#include <cstdint>

namespace halvor::kelo {

// The inner loops of the graphics decoders, built three times: for any x86-64 (SSE2, the
// build's baseline), for AVX2 and for AVX-512F. The widest one that the processor runs is chosen
// once, at the first call; the library as a whole still runs on any x86-64. Every variant gives
// the same bits as the others: the same conversions and the same one multiplication or division
// per value, in the precision that the layout prescribes, and no fused multiply-add (the file is
// built without contraction).
//
// Each loop converts `n` whole entries starting at `block`; the caller has checked the block's
// length and sized the outputs. Outputs never overlap each other or the block.
class GraphicsDecoderLoops {
 public:
  GraphicsDecoderLoops() = delete;

  enum class Variant { Baseline, Avx2, Avx512 };

  struct Table {
    // Spectrum trace: 2-byte signed amplitudes (narrow) or the low halves of 4-byte words
    // (wide), beside signed 4-byte frequencies.
    void (*narrowTrace)(const std::uint8_t* amplitude, const std::uint8_t* frequency, std::size_t n,
                        double* y, double* x);
    void (*wideTrace)(const std::uint8_t* amplitude, const std::uint8_t* frequency, std::size_t n,
                      double* y, double* x);
    // Entries of 8 bytes: two signed words with 24 fraction bits.
    void (*fixedPointPairs)(const std::uint8_t* block, std::size_t n, double* x, double* y);
    // Entries of 16 bytes, scaled in float arithmetic.
    void (*subCarrierGroups)(const std::uint8_t* block, std::size_t n, std::int32_t* groupIndex,
                             float* groupValue, float* firstValue, float* secondValue);
    // Entries of 4 bytes: unsigned hundredths, then a signed 16-bit word.
    void (*powerDistribution)(const std::uint8_t* block, std::size_t n, double* x, double* y);
    // Entries of 4 bytes, unsigned words; x is the entry's index.
    void (*amAmCorrection)(const std::uint8_t* block, std::size_t n, double* x, double* y);
    void (*amPmCorrection)(const std::uint8_t* block, std::size_t n, double* x, double* y);
    // Signed 16-bit hundredths; signed 32-bit words as they are.
    void (*eqResponses)(const std::uint8_t* block, std::size_t n, double* responses);
    void (*eqFrequencies)(const std::uint8_t* block, std::size_t n, std::int32_t* frequencies);
  };

  // The loops of the widest variant this processor runs, chosen once.
  static const Table& active();
  static Variant activeVariant();
  // The loops of one variant, or nullptr when this processor cannot run it (for the tests, which
  // hold every runnable variant to the reference decoders).
  static const Table* variant(Variant which);
  static const char* name(Variant which);
};

}  // namespace halvor::kelo
