#pragma once

#include <google/protobuf/repeated_ptr_field.h>
#include <google/protobuf/wrappers.pb.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"

namespace halvor::kelo::test {

// The first decoders of the graphics channels, kept as the reference that the decoders of
// GraphicsDecoders are held to: each entry read through a ByteVectorReader, field by field, and
// turned into its message at once. Slow, but it follows the layouts word by word.
class ReferenceDecoders {
 public:
  ReferenceDecoders() = delete;

  // 2 to the power of -24: the lowest bit of a fixed-point word with 24 fraction bits.
  static constexpr double kFixedPoint24 = 5.960464477539063e-08;
  // 2 to the power of -27: the lowest bit of an AM-AM correction word.
  static constexpr double kAmAmScale = 7.450580596923828e-09;
  // 2 to the power of 32 over 360: an AM-PM correction word per degree.
  static constexpr double kAmPmWordsPerDegree = 11930464.711111112;
  static constexpr std::size_t kAudioHeaderBytes = 16;
  static constexpr std::size_t kAudioRecordBytes = 70;
  static constexpr std::size_t kAudioVectorBytes = 6;
  static constexpr std::size_t kModulationVectorBytes = 10;

  // One spectrum trace's two parallel blocks as points. The form follows from the two lengths:
  // a frequency block of twice the amplitude block (give or take its last byte) holds 4-byte
  // words beside 2-byte amplitudes; blocks of equal length hold 4-byte words on both sides, of
  // which the amplitude keeps its low 16 bits; any other pair makes no points and no error. Both
  // numbers are signed and not scaled.
  static void appendTrace(const std::vector<std::uint8_t>& amplitude,
                          const std::vector<std::uint8_t>& frequency,
                          google::protobuf::RepeatedPtrField<protobuf::Point>& points);
  // Entries of 8 bytes: x, then y, each a signed 32-bit word with 24 fraction bits (the
  // constellation and the Lissajous figure).
  static void appendFixedPointPairs(const std::vector<std::uint8_t>& block,
                                    google::protobuf::RepeatedPtrField<protobuf::Point>& points);
  // Entries of 16 bytes: three dropped fields (1, 1 and 2 bytes), firstValue and secondValue
  // (signed 32-bit, thousandths), groupValue (signed 16-bit, hundredths) and groupIndex (signed
  // 16-bit), the scaling done in 32-bit float arithmetic.
  static void appendSubCarrierGroups(
      const std::vector<std::uint8_t>& block,
      google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>& groups);
  // Bytes 0 to 11 of the Lissajous header are passed over; the unsigned 16-bit word at 12 is the
  // header value. A header too short to hold that word leaves it unset and is no error.
  static void readLissajousHeader(const std::vector<std::uint8_t>& header,
                                  protobuf::Lissajous& result);
  // Entries of 4 bytes: x an unsigned 16-bit word in hundredths, y a signed 16-bit word as it
  // is. Unlike every other graph, a block that is not a whole number of entries makes no point
  // at all: the result is then valid and empty.
  static std::shared_ptr<protobuf::PowerDistribution> powerDistribution(
      const std::vector<std::uint8_t>& block);
  // Entries of 4 bytes, each an unsigned 32-bit word: the entry of index i (from 0) gives x = i
  // and y = the word times 2 to the power of -27 (AM-AM), or the word in degrees (AM-PM).
  static std::shared_ptr<protobuf::AmAmCorrection> amAmCorrection(
      const std::vector<std::uint8_t>& block);
  static std::shared_ptr<protobuf::AmPmCorrection> amPmCorrection(
      const std::vector<std::uint8_t>& block);
  // The equaliser: entries of 2 bytes, signed, in hundredths; entries of 4 bytes, signed, as
  // they are.
  static void appendEqResponses(
      const std::vector<std::uint8_t>& block,
      google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue>& responses);
  static void appendEqFrequencies(
      const std::vector<std::uint8_t>& block,
      google::protobuf::RepeatedPtrField<google::protobuf::Int32Value>& frequencies);
  // Three unsigned 16-bit words at `offset`, each in hundredths; five 16-bit words, the first
  // unsigned and the other four signed, each in hundredths. The bytes are copied out and read
  // on their own; a block too short for them throws std::out_of_range.
  static std::shared_ptr<protobuf::AudioVector> audioVector(const std::vector<std::uint8_t>& block,
                                                            unsigned char offset);
  static std::shared_ptr<protobuf::ModulationVector> modulationVector(
      const std::vector<std::uint8_t>& block, unsigned char offset);
  // The audio record's nine vectors and the header's sources and input types (single bytes at
  // 12 to 15). A header of fewer than 16 bytes or a record of fewer than 70 throws
  // std::out_of_range before anything is read: the positions are fixed.
  static std::shared_ptr<protobuf::AudioModVectors> audioModVectors(
      const std::vector<std::uint8_t>& header, const std::vector<std::uint8_t>& record);
};

}  // namespace halvor::kelo::test
