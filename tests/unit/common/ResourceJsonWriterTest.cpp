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
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceDepth.h"
#include "kelo/common/ResourceJsonWriter.h"

namespace halvor::kelo {
namespace {

using Message = protobuf::ResourceValue;

// Random messages of every shape: members set in any combination (also ones the converter never
// makes), wrappers at their defaults, texts over all of ASCII and some UTF-8, floats and doubles
// of every magnitude and the non-finite ones, enum numbers with and without a name.
class RandomResources {
 public:
  explicit RandomResources(unsigned seed) : random(seed) {}

  protobuf::Resource resource() {
    protobuf::Resource message;
    const int count = below(6);
    for (int i = 0; i < count; ++i) {
      fill((*message.mutable_values())[text()], 0);
    }
    if (below(4) == 0) {
      message.mutable_path()->set_value(text());
    }
    return message;
  }

 private:
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }

  std::string text() {
    static const char* const kPieces[] = {"",
                                          "a",
                                          "value",
                                          "/system/alarms",
                                          "\"",
                                          "\\",
                                          "<",
                                          ">",
                                          "'",
                                          "&",
                                          "=",
                                          "\n",
                                          "\t",
                                          "\x01",
                                          "\x7f",
                                          "é",
                                          "\xe2\x80\xa8",
                                          "\xff",
                                          "日本",
                                          " ",
                                          "{}",
                                          "/"};
    std::string out;
    const int pieces = below(5);
    for (int i = 0; i < pieces; ++i) {
      if (below(3) == 0) {
        out += static_cast<char>(0x20 + below(0x5f));  // any printable ASCII character
      } else {
        out += kPieces[below(sizeof(kPieces) / sizeof(kPieces[0]))];
      }
    }
    return out;
  }

  float number32() {
    switch (below(8)) {
      case 0:
        return 0.0f;
      case 1:
        return -0.0f;
      case 2:
        return std::numeric_limits<float>::infinity();
      case 3:
        return std::numeric_limits<float>::quiet_NaN();
      case 4:
        return std::numeric_limits<float>::denorm_min();
      case 5:
        return std::numeric_limits<float>::max();
      default:
        return std::ldexp(std::uniform_real_distribution<float>(-1, 1)(random), below(80) - 40);
    }
  }

  double number64() {
    switch (below(8)) {
      case 0:
        return 0.0;
      case 1:
        return -0.0;
      case 2:
        return -std::numeric_limits<double>::infinity();
      case 3:
        return std::numeric_limits<double>::quiet_NaN();
      case 4:
        return std::numeric_limits<double>::denorm_min();
      case 5:
        return 0.1;
      default:
        return std::ldexp(std::uniform_real_distribution<double>(-1, 1)(random), below(400) - 200);
    }
  }

  void fill(Message& value, int depth) {
    const int members = below(4);
    for (int i = 0; i < members; ++i) {
      switch (below(10)) {
        case 0:
          if (depth < 4) {
            const int count = below(4);
            for (int j = 0; j < count; ++j) fill(*value.add_listvalue(), depth + 1);
          }
          break;
        case 1:
          if (depth < 4) {
            const int count = below(4);
            for (int j = 0; j < count; ++j) fill((*value.mutable_mapvalue())[text()], depth + 1);
          }
          break;
        case 2:
          value.mutable_stringvalue()->set_value(text());
          break;
        case 3:
          value.mutable_boolvalue()->set_value(below(2) == 0);
          break;
        case 4:
          value.mutable_floatvalue()->set_value(number32());
          break;
        case 5:
          value.mutable_doublevalue()->set_value(number64());
          break;
        case 6:
          value.mutable_intvalue()->set_value(
              std::uniform_int_distribution<int32_t>(std::numeric_limits<int32_t>::min(),
                                                     std::numeric_limits<int32_t>::max())(random) >>
              below(32));
          break;
        case 7:
          value.mutable_bytesvalue()->set_value(text());
          break;
        default:
          value.set_type(static_cast<Message::ValueType>(below(11)));
          break;
      }
    }
  }

  std::mt19937 random;
};

TEST(ResourceJsonWriterTest, PrintsWhatProtobufPrintsForRandomMessages) {
  // Texts with bytes that are not UTF-8 make protobuf log a complaint on each serialisation.
  const google::protobuf::LogSilencer quiet;
  RandomResources make(20261121);
  int walked = 0;
  const int total = 20000;
  for (int i = 0; i < total; ++i) {
    const protobuf::Resource message = make.resource();
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
