#include "kelo/handlers/http/graphics/AudioModVectorsHelperClass.h"

#include <stdexcept>

#include "halvor/factories/GraphicsFactories.h"
#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

namespace {

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

}  // namespace

std::shared_ptr<protobuf::AudioVector> AudioModVectorsHelperClass::getAudioVector(
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

std::shared_ptr<protobuf::ModulationVector> AudioModVectorsHelperClass::getModulationVector(
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

std::shared_ptr<protobuf::AudioModVectors> AudioModVectorsHelperClass::decode(
    const std::vector<std::uint8_t>& header, const std::vector<std::uint8_t>& record) {
  requireLength(header, kHeaderBytes, "header");
  requireLength(record, kRecordBytes, "record");
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
  *vectors.mutable_audiovector1() = *getAudioVector(record, 0);
  *vectors.mutable_audiovector2() = *getAudioVector(record, 6);
  *vectors.mutable_modulationvector1() = *getModulationVector(record, 12);
  *vectors.mutable_modulationvector2() = *getModulationVector(record, 22);
  *vectors.mutable_audiovector3() = *getAudioVector(record, 32);
  *vectors.mutable_audiovector4() = *getAudioVector(record, 38);
  *vectors.mutable_modulationvector3() = *getModulationVector(record, 44);
  *vectors.mutable_modulationvector4() = *getModulationVector(record, 54);
  *vectors.mutable_audiovector5() = *getAudioVector(record, 64);
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AudioModVectors> AudioModVectorsHelperClass::getAudioModVectors(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  const tavelabi::Resource answer = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exAudioModVector", byPassSessionActivityTimerUpdate);
  // The header is taken before the record, so a missing "header" is the error reported.
  const std::vector<std::uint8_t> header = GraphicsChannelHelpers::copyBlock(answer, "header");
  const std::vector<std::uint8_t> record = GraphicsChannelHelpers::copyBlock(answer, "value");
  return decode(header, record);
}

}  // namespace halvor::kelo
