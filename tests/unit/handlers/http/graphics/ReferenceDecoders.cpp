#include "unit/handlers/http/graphics/ReferenceDecoders.h"

#include <stdexcept>
#include <string>

#include "halvor/factories/GraphicsFactories.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo::test {

namespace {

using Points = google::protobuf::RepeatedPtrField<protobuf::Point>;
enum class TraceForm { Narrow, Wide, None };

// The narrow form is tested first: blocks of 0 and 0 bytes are narrow, and so is a frequency
// block one byte longer than twice the amplitude block.
TraceForm formOf(std::size_t amplitudeLength, std::size_t frequencyLength) {
  if ((frequencyLength >> 1) == amplitudeLength) return TraceForm::Narrow;
  if (frequencyLength == amplitudeLength) return TraceForm::Wide;
  return TraceForm::None;
}

void addPoint(Points& points, double y, double x) {
  protobuf::Point* point = points.Add();
  point->mutable_y()->set_value(y);
  point->mutable_x()->set_value(x);
}

// The amplitude reader alone decides how long the loop runs: the frequency block is at least as
// long as the entries need, by the form test.
void readTrace(qvector::ByteVectorReader& amplitude, qvector::ByteVectorReader& frequency,
               TraceForm form, Points& points) {
  while (amplitude.remainingBytes() >= 1) {
    // A wide amplitude keeps only its low half, so it never leaves the 16-bit range.
    const std::int16_t y = form == TraceForm::Narrow
                               ? static_cast<std::int16_t>(amplitude.readUint16())
                               : static_cast<std::int16_t>(amplitude.readUint32() & 0xFFFFU);
    // Read unsigned, taken signed: a word of 2^31 or more comes out negative.
    const auto x = static_cast<std::int32_t>(frequency.readUint32());
    addPoint(points, y, x);
  }
}

// The correction curves: one unsigned 32-bit word per entry, x its index from 0, y the word
// scaled by the curve's own rule.
void appendIndexedWords(const std::vector<std::uint8_t>& block, Points& points,
                        double (*scaled)(double word)) {
  points.Reserve(static_cast<int>(block.size() / 4));
  qvector::ByteVectorReader reader(block);
  std::uint32_t index = 0;
  while (reader.remainingBytes() >= 1) {
    // Unsigned: the top half of the range stays positive.
    const double word = reader.readUint32();
    addPoint(points, scaled(word), static_cast<double>(index));
    ++index;
  }
}

// The header's four single bytes.
constexpr std::size_t kSourceMode1 = 12;
constexpr std::size_t kInputType1 = 13;
constexpr std::size_t kSourceMode2 = 14;
constexpr std::size_t kInputType2 = 15;

void requireLength(const std::vector<std::uint8_t>& block, std::size_t needed, const char* what) {
  if (block.size() < needed) {
    throw std::out_of_range(std::string("AudioModVectors: the ") + what + " holds " +
                            std::to_string(block.size()) + " bytes, fewer than " +
                            std::to_string(needed));
  }
}

// The bytes of one vector, copied out of the record, so that its reader sees nothing else.
std::vector<std::uint8_t> slice(const std::vector<std::uint8_t>& block, unsigned char offset,
                                std::size_t length) {
  requireLength(block, static_cast<std::size_t>(offset) + length, "vector's block");
  const auto begin = block.begin() + offset;
  return std::vector<std::uint8_t>(begin, begin + static_cast<std::ptrdiff_t>(length));
}

double hundredths(double value) { return value / 100.0; }

// The Lissajous header's skipped head; the power distribution's entry.
constexpr unsigned long kHeaderSkip = 12;
constexpr unsigned long kEntryBytes = 4;

}  // namespace

void ReferenceDecoders::appendTrace(const std::vector<std::uint8_t>& amplitude,
                                    const std::vector<std::uint8_t>& frequency, Points& points) {
  const TraceForm form = formOf(amplitude.size(), frequency.size());
  if (form == TraceForm::None) return;
  qvector::ByteVectorReader amplitudeReader(amplitude);
  qvector::ByteVectorReader frequencyReader(frequency);
  points.Reserve(points.size() +
                 static_cast<int>(amplitude.size() / (form == TraceForm::Narrow ? 2 : 4)));
  readTrace(amplitudeReader, frequencyReader, form, points);
}

void ReferenceDecoders::appendFixedPointPairs(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<protobuf::Point>& points) {
  qvector::ByteVectorReader reader(block);
  points.Reserve(points.size() + static_cast<int>(block.size() / 8));
  while (reader.remainingBytes() >= 1) {
    const double x = reader.readSint32() * kFixedPoint24;
    const double y = reader.readSint32() * kFixedPoint24;
    addPoint(points, y, x);
  }
}

void ReferenceDecoders::appendSubCarrierGroups(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>& groups) {
  qvector::ByteVectorReader reader(block);
  groups.Reserve(groups.size() + static_cast<int>(block.size() / 16));
  while (reader.remainingBytes() >= 1) {
    // The head of an entry is passed over; what it holds is not shown.
    (void)reader.readUint8();
    (void)reader.readUint8();
    (void)reader.readUint16();
    // Float arithmetic on purpose: these values are float fields, scaled as floats.
    const float first = static_cast<float>(reader.readSint32()) / 1000.0F;
    const float second = static_cast<float>(reader.readSint32()) / 1000.0F;
    const float groupValue = static_cast<float>(reader.readSint16()) / 100.0F;
    const std::int16_t groupIndex = reader.readSint16();
    protobuf::SubCarrierGroup* group = groups.Add();
    group->mutable_groupindex()->set_value(groupIndex);
    group->mutable_groupvalue()->set_value(groupValue);
    group->mutable_firstvalue()->set_value(first);
    group->mutable_secondvalue()->set_value(second);
  }
}

void ReferenceDecoders::readLissajousHeader(const std::vector<std::uint8_t>& header,
                                            protobuf::Lissajous& result) {
  // The reader refuses a position past the end, so a header of fewer than 12 bytes is told
  // apart before the skip: it holds no word either.
  if (header.size() < kHeaderSkip) return;
  qvector::ByteVectorReader reader(header);
  reader.setReadPosition(kHeaderSkip);
  if (reader.remainingBytes() > 1) {
    // Stored unsigned: 65535 stays 65535.
    result.mutable_headervalue()->set_value(static_cast<std::int32_t>(reader.readUint16()));
  }
}

std::shared_ptr<protobuf::PowerDistribution> ReferenceDecoders::powerDistribution(
    const std::vector<std::uint8_t>& block) {
  protobuf::HalvorPbFactory2PowerDistribution factory;
  qvector::ByteVectorReader reader(block);
  // The whole block is tested before the loop: a partial entry spoils the whole curve.
  if (reader.remainingBytes() % kEntryBytes != 0) return factory.release(nullptr);
  auto& points = *factory.overrides().mutable_points();
  points.Reserve(static_cast<int>(block.size() / kEntryBytes));
  while (reader.remainingBytes() >= 1) {
    const double x = reader.readUint16() / 100.0;
    const double y = static_cast<std::int16_t>(reader.readUint16());
    addPoint(points, y, x);
  }
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AmAmCorrection> ReferenceDecoders::amAmCorrection(
    const std::vector<std::uint8_t>& block) {
  protobuf::HalvorPbFactory2AmAmCorrection factory;
  appendIndexedWords(block, *factory.overrides().mutable_points(),
                     [](double word) { return word * kAmAmScale; });
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AmPmCorrection> ReferenceDecoders::amPmCorrection(
    const std::vector<std::uint8_t>& block) {
  protobuf::HalvorPbFactory2AmPmCorrection factory;
  appendIndexedWords(block, *factory.overrides().mutable_points(),
                     [](double word) { return word / kAmPmWordsPerDegree; });
  return factory.release(nullptr);
}

void ReferenceDecoders::appendEqResponses(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue>& responses) {
  qvector::ByteVectorReader reader(block);
  responses.Reserve(responses.size() + static_cast<int>(block.size() / 2));
  while (reader.remainingBytes() >= 1) {
    // Read before the element is added, so that a cut-off entry adds none.
    const double response = reader.readSint16() / 100.0;
    responses.Add()->set_value(response);
  }
}

void ReferenceDecoders::appendEqFrequencies(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<google::protobuf::Int32Value>& frequencies) {
  qvector::ByteVectorReader reader(block);
  frequencies.Reserve(frequencies.size() + static_cast<int>(block.size() / 4));
  while (reader.remainingBytes() >= 1) {
    const std::int32_t frequency = reader.readSint32();
    frequencies.Add()->set_value(frequency);
  }
}

std::shared_ptr<protobuf::AudioVector> ReferenceDecoders::audioVector(
    const std::vector<std::uint8_t>& block, unsigned char offset) {
  const std::vector<std::uint8_t> bytes = slice(block, offset, kAudioVectorBytes);
  qvector::ByteVectorReader reader(bytes);
  protobuf::HalvorPbFactory2AudioVector factory;
  protobuf::AudioVector& vector = factory.overrides();
  vector.mutable_value1()->set_value(hundredths(reader.readUint16()));
  vector.mutable_value2()->set_value(hundredths(reader.readUint16()));
  vector.mutable_value3()->set_value(hundredths(reader.readUint16()));
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::ModulationVector> ReferenceDecoders::modulationVector(
    const std::vector<std::uint8_t>& block, unsigned char offset) {
  const std::vector<std::uint8_t> bytes = slice(block, offset, kModulationVectorBytes);
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

std::shared_ptr<protobuf::AudioModVectors> ReferenceDecoders::audioModVectors(
    const std::vector<std::uint8_t>& header, const std::vector<std::uint8_t>& record) {
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

}  // namespace halvor::kelo::test
