#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

#include <bit>
#include <cstring>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "halvor/factories/GraphicsFactories.h"
#include "kelo/handlers/http/graphics/GraphicsDecoderLoops.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

namespace {

// The blocks are little-endian, as the machine's own numbers: a word is loaded with one copy,
// which lets the compiler turn each loop below into vector instructions.
static_assert(std::endian::native == std::endian::little,
              "the graphics blocks are read as the machine's own little-endian numbers");

using Bytes = GraphicsDecoders::Bytes;
using Points = google::protobuf::RepeatedPtrField<protobuf::Point>;

template <class Number>
Number load(const std::uint8_t* at) {
  Number value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

// The entry cut off by the block's end, read field by field with a ByteVectorReader, so that
// the exception (and its text) is the one that reading the block entry by entry gives at that
// entry. `widths` are the entry's reads, in order; one of them must pass the end.
[[noreturn]] void throwAtCutOffEntry(const Bytes& block, std::size_t entryBytes,
                                     std::initializer_list<unsigned> widths) {
  qvector::ByteVectorReader reader(block);
  reader.setReadPosition(block.size() - block.size() % entryBytes);
  for (const unsigned width : widths) {
    if (width == 1) {
      (void)reader.readUint8();
    } else if (width == 2) {
      (void)reader.readUint16();
    } else {
      (void)reader.readUint32();
    }
  }
  throw std::logic_error("GraphicsDecoders: a cut-off entry was read whole");
}

// The one bounds check of a block: the number of whole entries, which the loops convert.
std::size_t wholeEntries(const Bytes& block, std::size_t entryBytes) {
  return block.size() / entryBytes;
}

// After the whole entries: the exception of the entry that the block's end cuts off, if any.
void throwIfCutOff(const Bytes& block, std::size_t entryBytes,
                   std::initializer_list<unsigned> widths) {
  if (block.size() % entryBytes != 0) {
    throwAtCutOffEntry(block, entryBytes, widths);
  }
}

// Runs decode, then append; append also runs when decode throws, so that the entries decoded
// before a cut-off one are appended, as when the block is read entry by entry.
template <class Decode, class Append>
void decodeThenAppend(Decode&& decode, Append&& append) {
  try {
    decode();
  } catch (const std::out_of_range&) {
    append();
    throw;
  }
  append();
}

enum class TraceForm { Narrow, Wide, None };

// The narrow form is tested first: blocks of 0 and 0 bytes are narrow, and so is a frequency
// block one byte longer than twice the amplitude block.
TraceForm formOf(std::size_t amplitudeLength, std::size_t frequencyLength) {
  if ((frequencyLength >> 1) == amplitudeLength) return TraceForm::Narrow;
  if (frequencyLength == amplitudeLength) return TraceForm::Wide;
  return TraceForm::None;
}

// The loops of the widest instructions this processor runs.
const GraphicsDecoderLoops::Table& loops() { return GraphicsDecoderLoops::active(); }

// The header's four single bytes.
constexpr std::size_t kSourceMode1 = 12;
constexpr std::size_t kInputType1 = 13;
constexpr std::size_t kSourceMode2 = 14;
constexpr std::size_t kInputType2 = 15;

void requireLength(const Bytes& block, std::size_t needed, const char* what) {
  if (block.size() < needed) {
    throw std::out_of_range(std::string("AudioModVectors: the ") + what + " holds " +
                            std::to_string(block.size()) + " bytes, fewer than " +
                            std::to_string(needed));
  }
}

// The bytes of one vector, copied out of the record, so that its reader sees nothing else.
Bytes slice(const Bytes& block, unsigned char offset, std::size_t length) {
  requireLength(block, static_cast<std::size_t>(offset) + length, "vector's block");
  const auto begin = block.begin() + offset;
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(length));
}

double hundredths(double value) { return value / 100.0; }

// The Lissajous header's word follows 12 skipped bytes.
constexpr std::size_t kHeaderWord = 12;

}  // namespace

void GraphicsDecoders::decodeTrace(const Bytes& amplitude, const Bytes& frequency,
                                   PointColumns& points) {
  const TraceForm form = formOf(amplitude.size(), frequency.size());
  if (form == TraceForm::None) {
    points.resize(0);
    return;
  }
  // The amplitudes alone decide the count; by the form test the frequency block holds at least
  // 4 bytes for each of them.
  const unsigned width = form == TraceForm::Narrow ? 2 : 4;
  const std::size_t n = wholeEntries(amplitude, width);
  points.resize(n);
  // A wide amplitude keeps only its low half; the frequency words are taken signed.
  const auto trace = form == TraceForm::Narrow ? loops().narrowTrace : loops().wideTrace;
  trace(amplitude.data(), frequency.data(), n, points.y.data(), points.x.data());
  throwIfCutOff(amplitude, width, {width});
}

void GraphicsDecoders::decodeFixedPointPairs(const Bytes& block, PointColumns& points) {
  const std::size_t n = wholeEntries(block, 8);
  points.resize(n);
  loops().fixedPointPairs(block.data(), n, points.x.data(), points.y.data());
  throwIfCutOff(block, 8, {4, 4});
}

void GraphicsDecoders::decodeSubCarrierGroups(const Bytes& block, SubCarrierColumns& groups) {
  // The head of an entry (1, 1 and 2 bytes) is passed over; what it holds is not shown.
  const std::size_t n = wholeEntries(block, 16);
  groups.resize(n);
  // Float arithmetic on purpose: these values are float fields, scaled as floats.
  loops().subCarrierGroups(block.data(), n, groups.groupIndex.data(), groups.groupValue.data(),
                           groups.firstValue.data(), groups.secondValue.data());
  throwIfCutOff(block, 16, {1, 1, 2, 4, 4, 2, 2});
}

std::optional<std::int32_t> GraphicsDecoders::lissajousHeaderValue(const Bytes& header) {
  if (header.size() < kHeaderWord + 2) {
    return std::nullopt;
  }
  // Stored unsigned: 65535 stays 65535.
  return load<std::uint16_t>(header.data() + kHeaderWord);
}

void GraphicsDecoders::decodePowerDistribution(const Bytes& block, PointColumns& points) {
  // The whole block is tested first: a partial entry spoils the whole curve.
  if (block.size() % 4 != 0) {
    points.resize(0);
    return;
  }
  const std::size_t n = block.size() / 4;
  points.resize(n);
  loops().powerDistribution(block.data(), n, points.x.data(), points.y.data());
}

void GraphicsDecoders::decodeAmAmCorrection(const Bytes& block, PointColumns& points) {
  // Unsigned: the top half of the range stays positive. x is the entry's index.
  const std::size_t n = wholeEntries(block, 4);
  points.resize(n);
  loops().amAmCorrection(block.data(), n, points.x.data(), points.y.data());
  throwIfCutOff(block, 4, {4});
}

void GraphicsDecoders::decodeAmPmCorrection(const Bytes& block, PointColumns& points) {
  const std::size_t n = wholeEntries(block, 4);
  points.resize(n);
  loops().amPmCorrection(block.data(), n, points.x.data(), points.y.data());
  throwIfCutOff(block, 4, {4});
}

void GraphicsDecoders::decodeEqResponses(const Bytes& block, Column<double>& responses) {
  const std::size_t n = wholeEntries(block, 2);
  responses.resize(n);
  loops().eqResponses(block.data(), n, responses.data());
  throwIfCutOff(block, 2, {2});
}

void GraphicsDecoders::decodeEqFrequencies(const Bytes& block, Column<std::int32_t>& frequencies) {
  const std::size_t n = wholeEntries(block, 4);
  frequencies.resize(n);
  loops().eqFrequencies(block.data(), n, frequencies.data());
  throwIfCutOff(block, 4, {4});
}

void GraphicsDecoders::appendPoints(const PointColumns& columns, Points& points) {
  points.Reserve(points.size() + static_cast<int>(columns.size()));
  for (std::size_t i = 0; i < columns.size(); ++i) {
    protobuf::Point* point = points.Add();
    point->mutable_y()->set_value(columns.y[i]);
    point->mutable_x()->set_value(columns.x[i]);
  }
}

void GraphicsDecoders::appendTrace(const Bytes& amplitude, const Bytes& frequency, Points& points) {
  PointColumns columns;
  decodeThenAppend([&] { decodeTrace(amplitude, frequency, columns); },
                   [&] { appendPoints(columns, points); });
}

void GraphicsDecoders::appendFixedPointPairs(const Bytes& block, Points& points) {
  PointColumns columns;
  decodeThenAppend([&] { decodeFixedPointPairs(block, columns); },
                   [&] { appendPoints(columns, points); });
}

void GraphicsDecoders::appendSubCarrierGroups(
    const Bytes& block, google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>& groups) {
  SubCarrierColumns columns;
  decodeThenAppend([&] { decodeSubCarrierGroups(block, columns); },
                   [&] {
                     groups.Reserve(groups.size() + static_cast<int>(columns.size()));
                     for (std::size_t i = 0; i < columns.size(); ++i) {
                       protobuf::SubCarrierGroup* group = groups.Add();
                       group->mutable_groupindex()->set_value(columns.groupIndex[i]);
                       group->mutable_groupvalue()->set_value(columns.groupValue[i]);
                       group->mutable_firstvalue()->set_value(columns.firstValue[i]);
                       group->mutable_secondvalue()->set_value(columns.secondValue[i]);
                     }
                   });
}

void GraphicsDecoders::readLissajousHeader(const Bytes& header, protobuf::Lissajous& result) {
  const std::optional<std::int32_t> value = lissajousHeaderValue(header);
  if (value) {
    result.mutable_headervalue()->set_value(*value);
  }
}

std::shared_ptr<protobuf::PowerDistribution> GraphicsDecoders::powerDistribution(
    const Bytes& block) {
  PointColumns columns;
  decodePowerDistribution(block, columns);
  protobuf::HalvorPbFactory2PowerDistribution factory;
  appendPoints(columns, *factory.overrides().mutable_points());
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AmAmCorrection> GraphicsDecoders::amAmCorrection(const Bytes& block) {
  PointColumns columns;
  decodeAmAmCorrection(block, columns);
  protobuf::HalvorPbFactory2AmAmCorrection factory;
  appendPoints(columns, *factory.overrides().mutable_points());
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AmPmCorrection> GraphicsDecoders::amPmCorrection(const Bytes& block) {
  PointColumns columns;
  decodeAmPmCorrection(block, columns);
  protobuf::HalvorPbFactory2AmPmCorrection factory;
  appendPoints(columns, *factory.overrides().mutable_points());
  return factory.release(nullptr);
}

void GraphicsDecoders::appendEqResponses(
    const Bytes& block,
    google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue>& responses) {
  Column<double> values;
  decodeThenAppend([&] { decodeEqResponses(block, values); },
                   [&] {
                     responses.Reserve(responses.size() + static_cast<int>(values.size()));
                     for (const double value : values) responses.Add()->set_value(value);
                   });
}

void GraphicsDecoders::appendEqFrequencies(
    const Bytes& block,
    google::protobuf::RepeatedPtrField<google::protobuf::Int32Value>& frequencies) {
  Column<std::int32_t> values;
  decodeThenAppend([&] { decodeEqFrequencies(block, values); },
                   [&] {
                     frequencies.Reserve(frequencies.size() + static_cast<int>(values.size()));
                     for (const std::int32_t value : values) frequencies.Add()->set_value(value);
                   });
}

std::shared_ptr<protobuf::AudioVector> GraphicsDecoders::audioVector(const Bytes& block,
                                                                     unsigned char offset) {
  const Bytes bytes = slice(block, offset, kAudioVectorBytes);
  qvector::ByteVectorReader reader(bytes);
  protobuf::HalvorPbFactory2AudioVector factory;
  protobuf::AudioVector& vector = factory.overrides();
  vector.mutable_value1()->set_value(hundredths(reader.readUint16()));
  vector.mutable_value2()->set_value(hundredths(reader.readUint16()));
  vector.mutable_value3()->set_value(hundredths(reader.readUint16()));
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::ModulationVector> GraphicsDecoders::modulationVector(
    const Bytes& block, unsigned char offset) {
  const Bytes bytes = slice(block, offset, kModulationVectorBytes);
  qvector::ByteVectorReader reader(bytes);
  protobuf::HalvorPbFactory2ModulationVector factory;
  protobuf::ModulationVector& vector = factory.overrides();
  // The first word is unsigned, the other four signed.
  vector.mutable_value1()->set_value(hundredths(reader.readUint16()));
  vector.mutable_value2()->set_value(hundredths(static_cast<std::int16_t>(reader.readUint16())));
  vector.mutable_value3()->set_value(hundredths(static_cast<std::int16_t>(reader.readUint16())));
  vector.mutable_value4()->set_value(hundredths(static_cast<std::int16_t>(reader.readUint16())));
  vector.mutable_value5()->set_value(hundredths(static_cast<std::int16_t>(reader.readUint16())));
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AudioModVectors> GraphicsDecoders::audioModVectors(const Bytes& header,
                                                                             const Bytes& record) {
  requireLength(header, kAudioHeaderBytes, "header");
  requireLength(record, kAudioRecordBytes, "record");
  protobuf::HalvorPbFactory2AudioModVectors factory;
  protobuf::AudioModVectors& vectors = factory.overrides();
  // Single bytes, taken as they stand; a number without a name stays a number.
  vectors.set_audiosourcemode1(static_cast<protobuf::AudioSourceMode>(header[kSourceMode1]));
  vectors.set_audioinputtype1(
      static_cast<protobuf::AudioEnums::AudioInputType>(header[kInputType1]));
  vectors.set_audiosourcemode2(static_cast<protobuf::AudioSourceMode>(header[kSourceMode2]));
  vectors.set_audioinputtype2(
      static_cast<protobuf::AudioEnums::AudioInputType>(header[kInputType2]));
  // The record's nine vectors, in the order of their offsets.
  *vectors.mutable_audiovector1() = *audioVector(record, 0);
  *vectors.mutable_audiovector2() = *audioVector(record, 6);
  *vectors.mutable_modulationvector1() = *modulationVector(record, 12);
  *vectors.mutable_modulationvector2() = *modulationVector(record, 22);
  *vectors.mutable_audiovector3() = *audioVector(record, 32);
  *vectors.mutable_audiovector4() = *audioVector(record, 38);
  *vectors.mutable_modulationvector3() = *modulationVector(record, 44);
  *vectors.mutable_modulationvector4() = *modulationVector(record, 54);
  *vectors.mutable_audiovector5() = *audioVector(record, 64);
  return factory.release(nullptr);
}

}  // namespace halvor::kelo
