#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace halvor::kelo {

// The pieces of JSON text that protobuf's printer writes for texts, numbers and bytes, written
// the same way without it. Each append either writes exactly protobuf's text or, where that
// text needs rules it does not follow, returns false; out is then in an unspecified state and
// the caller hands the whole message to protobuf's printer.
class JsonText {
 public:
  JsonText() = delete;

  // A quoted text. Printable ASCII and the common two-byte UTF-8 characters, where protobuf's
  // escaping is plain: '"' and '\\' get a backslash, '<' and '>' become \u003c and \u003e,
  // the rest stays as it is. False for control characters, malformed UTF-8, the few two-byte
  // characters that protobuf escapes and every longer UTF-8 sequence, where its rules grow.
  static bool appendString(std::string_view text, std::string& out);
  // The shortest text that reads back as the same number, by protobuf's rule; false when the
  // number is not finite.
  static bool appendFloat(float value, std::string& out);
  static bool appendDouble(double value, std::string& out);
  // The most characters of a whole number's text below: a sign and 15 digits, with room.
  static constexpr std::size_t kMostWholeNumberText = 24;
  // appendDouble's text of a whole number below 10^15 in size (not -0), written at `at`, which
  // has room for kMostWholeNumberText characters; the end of the text, or nullptr for any other
  // number, which appendDouble writes.
  static char* tryWriteWholeNumber(double value, char* at);
  // Standard base64 with padding, quoted.
  static void appendBytes(std::string_view bytes, std::string& out);

 private:
  static bool isPlainTwoByteCharacter(std::string_view text, std::size_t at);
  // The escape of a character whose class is Escaped.
  static const char* escapeOf(unsigned char c);
};

}  // namespace halvor::kelo
