#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/graphics/AudioModVectorsHelperClass.h"
#include "kelo/handlers/http/graphics/GetAudioModVectorsHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;

Bytes header(std::uint8_t source1, std::uint8_t type1, std::uint8_t source2, std::uint8_t type2) {
  Bytes block(12, 0x77);
  block.insert(block.end(), {source1, type1, source2, type2});
  return block;
}

// A record whose 35 words count 1, 2, 3, ... so that every value shows where it came from.
Bytes countingRecord() {
  Bytes block;
  for (std::uint16_t word = 1; word <= 35; ++word) put16(block, word);
  return block;
}

TEST(AudioVectorTest, UnsignedWordsInHundredths) {
  const Bytes block = words16({0, 65535, 1, 250});
  const auto vector = AudioModVectorsHelperClass::getAudioVector(block, 2);
  EXPECT_EQ(vector->value1().value(), 655.35);
  EXPECT_EQ(vector->value2().value(), 0.01);
  EXPECT_EQ(vector->value3().value(), 2.5);
}

TEST(ModulationVectorTest, TheFirstWordUnsignedTheOthersSigned) {
  const Bytes block = words16({65535, 65535, static_cast<std::uint16_t>(-250), 100, 32767});
  const auto vector = AudioModVectorsHelperClass::getModulationVector(block, 0);
  EXPECT_EQ(vector->value1().value(), 655.35);
  EXPECT_EQ(vector->value2().value(), -0.01);
  EXPECT_EQ(vector->value3().value(), -2.5);
  EXPECT_EQ(vector->value4().value(), 1.0);
  EXPECT_EQ(vector->value5().value(), 327.67);
}

TEST(AudioVectorTest, AVectorPastTheBlocksEndThrows) {
  EXPECT_THROW(AudioModVectorsHelperClass::getAudioVector(Bytes(7, 0), 2), std::out_of_range);
  EXPECT_THROW(AudioModVectorsHelperClass::getModulationVector(Bytes(70, 0), 64),
               std::out_of_range);
}

TEST(AudioModVectorsDecodeTest, HeaderBytesGiveSourcesAndInputTypes) {
  const auto vectors = GraphicsDecoders::audioModVectors(header(1, 0, 3, 1), Bytes(70, 0));
  EXPECT_EQ(vectors->audiosourcemode1(), protobuf::AUDIO_SOURCE_ANALOG_AES);
  EXPECT_EQ(vectors->audioinputtype1(), protobuf::AudioEnums::AUDIO_INPUT_TYPE_ANALOG);
  EXPECT_EQ(vectors->audiosourcemode2(), protobuf::AUDIO_SOURCE_DIGITAL_AES);
  EXPECT_EQ(vectors->audioinputtype2(), protobuf::AudioEnums::AUDIO_INPUT_TYPE_DIGITAL);
}

TEST(AudioModVectorsDecodeTest, TheNineRecordsAtTheirOffsets) {
  const auto v = GraphicsDecoders::audioModVectors(header(0, 0, 0, 0), countingRecord());
  // Words 1-3 at 0, 4-6 at 6, 7-11 at 12, 12-16 at 22, 17-19 at 32, 20-22 at 38, 23-27 at 44,
  // 28-32 at 54, 33-35 at 64.
  EXPECT_EQ(v->audiovector1().value1().value(), 0.01);
  EXPECT_EQ(v->audiovector1().value3().value(), 0.03);
  EXPECT_EQ(v->audiovector2().value1().value(), 0.04);
  EXPECT_EQ(v->modulationvector1().value1().value(), 0.07);
  EXPECT_EQ(v->modulationvector1().value5().value(), 0.11);
  EXPECT_EQ(v->modulationvector2().value1().value(), 0.12);
  EXPECT_EQ(v->audiovector3().value1().value(), 0.17);
  EXPECT_EQ(v->audiovector4().value1().value(), 0.2);
  EXPECT_EQ(v->modulationvector3().value1().value(), 0.23);
  EXPECT_EQ(v->modulationvector4().value5().value(), 0.32);
  EXPECT_EQ(v->audiovector5().value3().value(), 0.35);
}

TEST(AudioModVectorsDecodeTest, ShortBlocksThrowBeforeAnyRead) {
  EXPECT_THROW(GraphicsDecoders::audioModVectors(Bytes(15, 0), Bytes(70, 0)), std::out_of_range);
  EXPECT_THROW(GraphicsDecoders::audioModVectors(Bytes(16, 0), Bytes(69, 0)), std::out_of_range);
  EXPECT_NO_THROW(GraphicsDecoders::audioModVectors(Bytes(16, 0), Bytes(70, 0)));
}

class GetAudioModVectorsTest : public HandlerTest<GetAudioModVectorsHandler> {};

TEST_F(GetAudioModVectorsTest, TheVectorsAsJsonWithEnumNames) {
  Resource answer = channel(Bytes(70, 0));
  answer.values["header"] = byteArray(header(1, 0, 3, 1));
  host.answer(graphicsPath("exAudioModVector"), answer);
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/graphics/audio-mod-vectors", "", "", "c");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  const std::string zeros3 = R"({"value1":0,"value2":0,"value3":0})";
  const std::string zeros5 = R"({"value1":0,"value2":0,"value3":0,"value4":0,"value5":0})";
  EXPECT_EQ(resp->body(), "{\"audioVector1\":" + zeros3 + ",\"audioVector2\":" + zeros3 +
                              ",\"audioVector3\":" + zeros3 + ",\"audioVector4\":" + zeros3 +
                              ",\"audioVector5\":" + zeros3 + ",\"modulationVector1\":" + zeros5 +
                              ",\"modulationVector2\":" + zeros5 + ",\"modulationVector3\":" +
                              zeros5 + ",\"modulationVector4\":" + zeros5 +
                              R"(,"audioSourceMode1":"AUDIO_SOURCE_ANALOG_AES",)"
                              R"("audioSourceMode2":"AUDIO_SOURCE_DIGITAL_AES",)"
                              R"("audioInputType2":"AUDIO_INPUT_TYPE_DIGITAL"})");
  EXPECT_FALSE(
      host.onlyAction().resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(GetAudioModVectorsTest, AMissingHeaderIsMapAt) {
  host.answer(graphicsPath("exAudioModVector"), channel(Bytes(70, 0)));
  EXPECT_THROW(call(host, web::Get, "/1/api/graphics/audio-mod-vectors", "", "", "c"),
               std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo::test
