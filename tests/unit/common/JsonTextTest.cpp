#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/wrappers.pb.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "kelo/common/JsonOptions.h"
#include "kelo/common/JsonText.h"

namespace halvor::kelo {
namespace {

std::string protobufText(const std::string& text) {
  google::protobuf::StringValue wrapper;
  wrapper.set_value(text);
  return JsonOptions::protobufJson(wrapper);
}

std::string utf8(unsigned codePoint) {
  std::string out;
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xc0 | (codePoint >> 6));
    out += static_cast<char>(0x80 | (codePoint & 0x3f));
  } else {
    out += static_cast<char>(0xe0 | (codePoint >> 12));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3f));
    out += static_cast<char>(0x80 | (codePoint & 0x3f));
  }
  return out;
}

TEST(JsonTextTest, EveryCharacterUpToThreeBytesIsPrintedAsProtobufPrintsItOrRefused) {
  const google::protobuf::LogSilencer quiet;
  int printed = 0;
  for (unsigned codePoint = 0; codePoint < 0x10000; ++codePoint) {
    if (codePoint >= 0xd800 && codePoint <= 0xdfff) continue;  // surrogates are not characters
    std::string text = "a";
    text += utf8(codePoint);
    text += 'z';
    std::string out;
    if (JsonText::appendString(text, out)) {
      ++printed;
      ASSERT_EQ(out, protobufText(text)) << std::hex << codePoint;
    }
  }
  // Printable ASCII (95) and all but a few of the 1,888 characters U+00A0 to U+07FF.
  EXPECT_GT(printed, 95 + 1880);
}

TEST(JsonTextTest, UnitsOfTheDemoMetersArePrintedAsTheyStand) {
  std::string out;
  ASSERT_TRUE(
      JsonText::appendString("\xc2\xb0"
                             "C <\"\\>",
                             out));
  EXPECT_EQ(out,
            "\"\xc2\xb0"
            "C \\u003c\\\"\\\\\\u003e\"");
  EXPECT_EQ(out, protobufText("\xc2\xb0"
                              "C <\"\\>"));
}

TEST(JsonTextTest, MalformedUtf8IsLeftToProtobuf) {
  for (const std::string& text :
       {std::string("\xc3"), std::string("\xc3(x"), std::string("\xc0\x80"), std::string("\xff"),
        std::string("\x80"), std::string("\xe2\x82")}) {
    std::string out;
    EXPECT_FALSE(JsonText::appendString(text, out)) << text;
  }
}

TEST(JsonTextTest, NumbersAreTheShortestTextThatReadsBack) {
  std::string out;
  ASSERT_TRUE(JsonText::appendDouble(0.1, out));
  out += ',';
  ASSERT_TRUE(JsonText::appendFloat(0.1f, out));
  out += ',';
  ASSERT_TRUE(JsonText::appendDouble(-0.0, out));
  EXPECT_EQ(out, "0.1,0.1,-0");
  EXPECT_FALSE(JsonText::appendDouble(std::numeric_limits<double>::quiet_NaN(), out));
}

}  // namespace
}  // namespace halvor::kelo

namespace halvor::kelo {
namespace {

// Whole numbers take a shorter way; it must give protobuf's text on both sides of its bounds.
TEST(JsonTextWholeNumbersTest, WholeDoublesPrintAsProtobufPrintsThem) {
  const double values[] = {0.0,
                           -0.0,
                           1.0,
                           -1.0,
                           -80.0,
                           97900000.0,
                           -2147483648.0,
                           4294967295.0,
                           1e14,
                           999999999999999.0,
                           -999999999999999.0,
                           1e15,
                           -1e15,
                           1e16,
                           123456789012345678.0,
                           0.5,
                           -0.01,
                           1e-300};
  for (double value : values) {
    google::protobuf::DoubleValue wrapper;
    wrapper.set_value(value);
    std::string out;
    ASSERT_TRUE(JsonText::appendDouble(value, out));
    EXPECT_EQ(out, JsonOptions::protobufJson(wrapper)) << value;
  }
}

}  // namespace
}  // namespace halvor::kelo
