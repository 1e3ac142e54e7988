#pragma once

#include <google/protobuf/repeated_ptr_field.h>
#include <google/protobuf/wrappers.pb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"

namespace halvor::kelo {

// The byte layouts of the graphics channels (little-endian). Each block is decoded into plain
// numbers: the count of whole entries is taken once from its length, then one tight loop per
// array converts them, reading nothing outside the block. A block that ends in the middle of an
// entry then throws std::out_of_range, the same exception, text included, that a ByteVectorReader
// reading the block entry by entry throws at that entry; the whole entries before it stay decoded
// (and appended, in the message forms), as they would be read one by one. No host call is made
// here: the helper classes read the channels and hand their blocks over. The message forms
// (append..., powerDistribution, ...) build the messages from those numbers.
class GraphicsDecoders {
 public:
  GraphicsDecoders() = delete;

  using Bytes = std::vector<std::uint8_t>;

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
  // numbers are signed and not scaled. `points` is replaced.
  static void decodeTrace(const Bytes& amplitude, const Bytes& frequency, PointColumns& points);
  // Entries of 8 bytes: x, then y, each a signed 32-bit word with 24 fraction bits (the
  // constellation and the Lissajous figure).
  static void decodeFixedPointPairs(const Bytes& block, PointColumns& points);
  // Entries of 16 bytes: three dropped fields (1, 1 and 2 bytes), firstValue and secondValue
  // (signed 32-bit, thousandths), groupValue (signed 16-bit, hundredths) and groupIndex (signed
  // 16-bit), the scaling done in 32-bit float arithmetic.
  static void decodeSubCarrierGroups(const Bytes& block, SubCarrierColumns& groups);
  // Bytes 0 to 11 of the Lissajous header are passed over; the unsigned 16-bit word at 12 is the
  // header value. A header too short to hold that word gives none and is no error.
  static std::optional<std::int32_t> lissajousHeaderValue(const Bytes& header);
  // Entries of 4 bytes: x an unsigned 16-bit word in hundredths, y a signed 16-bit word as it
  // is. Unlike every other graph, a block that is not a whole number of entries makes no point
  // at all and is no error.
  static void decodePowerDistribution(const Bytes& block, PointColumns& points);
  // Entries of 4 bytes, each an unsigned 32-bit word: the entry of index i (from 0) gives x = i
  // and y = the word times 2 to the power of -27 (AM-AM), or the word in degrees (AM-PM).
  static void decodeAmAmCorrection(const Bytes& block, PointColumns& points);
  static void decodeAmPmCorrection(const Bytes& block, PointColumns& points);
  // The equaliser: entries of 2 bytes, signed, in hundredths; entries of 4 bytes, signed, as
  // they are.
  static void decodeEqResponses(const Bytes& block, Column<double>& responses);
  static void decodeEqFrequencies(const Bytes& block, Column<std::int32_t>& frequencies);

  // The message forms, appending to the given lists or returning a new message.
  static void appendTrace(const Bytes& amplitude, const Bytes& frequency,
                          google::protobuf::RepeatedPtrField<protobuf::Point>& points);
  static void appendFixedPointPairs(const Bytes& block,
                                    google::protobuf::RepeatedPtrField<protobuf::Point>& points);
  static void appendSubCarrierGroups(
      const Bytes& block, google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>& groups);
  static void readLissajousHeader(const Bytes& header, protobuf::Lissajous& result);
  static std::shared_ptr<protobuf::PowerDistribution> powerDistribution(const Bytes& block);
  static std::shared_ptr<protobuf::AmAmCorrection> amAmCorrection(const Bytes& block);
  static std::shared_ptr<protobuf::AmPmCorrection> amPmCorrection(const Bytes& block);
  static void appendEqResponses(
      const Bytes& block,
      google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue>& responses);
  static void appendEqFrequencies(
      const Bytes& block,
      google::protobuf::RepeatedPtrField<google::protobuf::Int32Value>& frequencies);
  // Points appended one message per entry, y then x.
  static void appendPoints(const PointColumns& columns,
                           google::protobuf::RepeatedPtrField<protobuf::Point>& points);

  // Three unsigned 16-bit words at `offset`, each in hundredths; five 16-bit words, the first
  // unsigned and the other four signed, each in hundredths. The bytes are copied out and read
  // on their own; a block too short for them throws std::out_of_range.
  static std::shared_ptr<protobuf::AudioVector> audioVector(const Bytes& block,
                                                            unsigned char offset);
  static std::shared_ptr<protobuf::ModulationVector> modulationVector(const Bytes& block,
                                                                      unsigned char offset);
  // The audio record's nine vectors and the header's sources and input types (single bytes at
  // 12 to 15). A header of fewer than 16 bytes or a record of fewer than 70 throws
  // std::out_of_range before anything is read: the positions are fixed.
  static std::shared_ptr<protobuf::AudioModVectors> audioModVectors(const Bytes& header,
                                                                    const Bytes& record);
};

}  // namespace halvor::kelo
