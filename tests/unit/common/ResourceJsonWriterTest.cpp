#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include "NestedResources.h"
#include "RandomMessages.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceDepth.h"
#include "kelo/common/ResourceJsonWriter.h"

namespace halvor::kelo {
namespace {

using Message = protobuf::ResourceValue;

TEST(ResourceJsonWriterTest, PrintsWhatProtobufPrintsForRandomMessages) {
  // Texts with bytes that are not UTF-8 make protobuf log a complaint on each serialisation.
  const google::protobuf::LogSilencer quiet;
  test::RandomMessages make(20261121);
  int walked = 0;
  const int total = 20000;
  for (int i = 0; i < total; ++i) {
    protobuf::Resource message;
    make.fill(message);
    const std::string expected = JsonOptions::protobufJson(message);
    ASSERT_EQ(ResourceJsonWriter::print(message), expected) << message.DebugString();
    std::string direct;
    if (ResourceJsonWriter::tryPrint(message, direct)) {
      ++walked;
      ASSERT_EQ(direct, expected) << message.DebugString();
    }
  }
  // The walk itself, not only the fallback, must have been compared often.
  EXPECT_GT(walked, total / 4) << walked;
  RecordProperty("walked", walked);
}

// Numbers from random bit patterns reach every exponent, subnormal ones included.
TEST(ResourceJsonWriterTest, PrintsFloatsAndDoublesOfAnyBitPatternAsProtobufDoes) {
  std::mt19937_64 random(42);
  int compared = 0;
  for (int i = 0; i < 30000; ++i) {
    const uint64_t bits = random();
    const float single = std::bit_cast<float>(static_cast<uint32_t>(bits));
    const double twice = std::bit_cast<double>(bits);
    protobuf::Resource message;
    Message& value = (*message.mutable_values())["n"];
    if (std::isfinite(single)) {
      value.mutable_floatvalue()->set_value(single);
    }
    if (std::isfinite(twice)) {
      value.mutable_doublevalue()->set_value(twice);
    }
    std::string out;
    ASSERT_TRUE(ResourceJsonWriter::tryPrint(message, out));
    ASSERT_EQ(out, JsonOptions::protobufJson(message)) << single << " " << twice;
    ++compared;
  }
  EXPECT_EQ(compared, 30000);
}

TEST(ResourceJsonWriterTest, EmptyResourceIsAnEmptyObject) {
  std::string out;
  ASSERT_TRUE(ResourceJsonWriter::tryPrint(protobuf::Resource(), out));
  EXPECT_EQ(out, "{}");
}

TEST(ResourceJsonWriterTest, PlainResourceIsWalked) {
  protobuf::Resource message;
  Message& value = (*message.mutable_values())["value"];
  value.set_type(Message::LIST_VALUE);
  Message* element = value.add_listvalue();
  element->set_type(Message::STRING);
  element->mutable_stringvalue()->set_value("say \"hi\" <now>");
  std::string out;
  ASSERT_TRUE(ResourceJsonWriter::tryPrint(message, out));
  EXPECT_EQ(out, JsonOptions::protobufJson(message));
}

TEST(ResourceJsonWriterTest, LeavesNonAsciiTextAndNonFiniteNumbersToProtobuf) {
  protobuf::Resource text;
  (*text.mutable_values())["name"].mutable_stringvalue()->set_value("S\u00e4nder \u2192 2");
  std::string out;
  EXPECT_FALSE(ResourceJsonWriter::tryPrint(text, out));
  EXPECT_EQ(ResourceJsonWriter::print(text), JsonOptions::protobufJson(text));

  protobuf::Resource number;
  (*number.mutable_values())["x"].mutable_doublevalue()->set_value(
      std::numeric_limits<double>::infinity());
  out.clear();
  EXPECT_FALSE(ResourceJsonWriter::tryPrint(number, out));
  EXPECT_EQ(ResourceJsonWriter::print(number), JsonOptions::protobufJson(number));
}

TEST(ResourceJsonWriterTest, DeepestPrintableNestingIsWalkedAndDeeperIsRefused) {
  using Through = test::NestedResources::Through;
  for (const Through through : {Through::Lists, Through::Maps, Through::Both}) {
    const protobuf::Resource deepest =
        test::NestedResources::deep(ResourceDepth::kMaxDepth, through);
    std::string out;
    EXPECT_TRUE(ResourceJsonWriter::tryPrint(deepest, out));
    EXPECT_EQ(out, JsonOptions::protobufJson(deepest));
    EXPECT_TRUE(test::NestedResources::isJson(ResourceJsonWriter::print(deepest)));

    const protobuf::Resource tooDeep =
        test::NestedResources::deep(ResourceDepth::kMaxDepth + 1, through);
    EXPECT_FALSE(ResourceJsonWriter::tryPrint(tooDeep, out));
    EXPECT_THROW(ResourceJsonWriter::print(tooDeep), std::length_error);
  }
}

TEST(ResourceJsonWriterTest, TooDeepWithTextForProtobufIsRefusedToo) {
  protobuf::Resource message = test::NestedResources::deep(ResourceDepth::kMaxDepth + 1,
                                                           test::NestedResources::Through::Both);
  Message& text = (*message.mutable_values())["text"];
  text.set_type(Message::STRING);
  text.mutable_stringvalue()->set_value("caf\xc3\xa9");
  EXPECT_THROW(ResourceJsonWriter::print(message), std::length_error);
}

TEST(ResourceJsonWriterTest, MapKeysArePrintedInKeyOrderAtEveryLevel) {
  const std::string expected =
      R"({"values":{"a":{"intValue":97,"type":"INT32"},"b":{"intValue":98,"type":"INT32"},)"
      R"("c":{"intValue":99,"type":"INT32"},"nested":{"mapValue":{"a":{"intValue":97,)"
      R"("type":"INT32"},"b":{"intValue":98,"type":"INT32"},"c":{"intValue":99,)"
      R"("type":"INT32"}},"type":"MAP_VALUE"}}})";
  EXPECT_EQ(ResourceJsonWriter::print(test::NestedResources::keyed("cab")), expected);
  const std::string forward =
      ResourceJsonWriter::print(test::NestedResources::keyed("abcdefghijklmnopqrstuvwxyz"));
  EXPECT_EQ(forward,
            ResourceJsonWriter::print(test::NestedResources::keyed("qwertyuiopasdfghjklzxcvbnm")));
}

}  // namespace
}  // namespace halvor::kelo
