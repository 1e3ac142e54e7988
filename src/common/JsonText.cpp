#include "kelo/common/JsonText.h"

#include <google/protobuf/stubs/strutil.h>

#include <array>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <system_error>

namespace halvor::kelo {

namespace {

// Protobuf's own rule for finite numbers (SimpleFtoa, SimpleDtoa): printf's "%.*g" with the
// type's guaranteed digits, or with more digits when that text does not read back as the same
// number. std::to_chars with a precision is defined as that printf conversion in the C locale,
// without printf's cost. Protobuf reads a float back with strtof and takes its range error on a
// subnormal number as a failed read, so subnormal floats always get the longer text.
template <class Number>
void appendShortest(Number value, int digits, int moreDigits, bool longerWhenSubnormal,
                    std::string& out) {
  char buffer[64];
  auto printed =
      std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, digits);
  Number parsed = 0;
  const auto read = std::from_chars(buffer, printed.ptr, parsed);
  if (read.ec != std::errc() || parsed != value ||
      (longerWhenSubnormal && std::fpclassify(value) == FP_SUBNORMAL)) {
    printed = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general,
                            moreDigits);
  }
  out.append(buffer, printed.ptr);
}

enum class CharacterClass : unsigned char { Plain, Escaped, Refused, Lead };

// What each byte is to appendString: printed as it is, escaped, refused (control characters and
// DEL, which protobuf escapes in ways not written here), or the start of a multi-byte character.
constexpr std::array<CharacterClass, 256> kCharacterClasses = [] {
  std::array<CharacterClass, 256> classes{};
  for (unsigned c = 0; c < classes.size(); ++c) {
    if (c >= 0x80) {
      classes[c] = CharacterClass::Lead;
    } else if (c < 0x20 || c == 0x7f) {
      classes[c] = CharacterClass::Refused;
    } else if (c == '"' || c == '\\' || c == '<' || c == '>') {
      classes[c] = CharacterClass::Escaped;
    } else {
      classes[c] = CharacterClass::Plain;
    }
  }
  return classes;
}();

}  // namespace

bool JsonText::appendString(std::string_view text, std::string& out) {
  out += '"';
  const auto* const data = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t size = text.size();
  std::size_t plain = 0;  // the start of the run of characters that need no escape
  std::size_t i = 0;
  while (i < size) {
    // Most characters of a meter's texts need nothing: one table look-up each skips them.
    const CharacterClass kind = kCharacterClasses[data[i]];
    if (kind == CharacterClass::Plain) {
      ++i;
      continue;
    }
    if (kind == CharacterClass::Refused) {
      return false;
    }
    if (kind == CharacterClass::Lead) {
      if (!isPlainTwoByteCharacter(text, i)) {
        return false;
      }
      i += 2;  // both bytes go out as they are
      continue;
    }
    out.append(text.data() + plain, i - plain);
    out += escapeOf(data[i]);
    plain = ++i;
  }
  out.append(text.data() + plain, size - plain);
  out += '"';
  return true;
}

const char* JsonText::escapeOf(unsigned char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '<':
      return "\\u003c";
    default:  // '>', the only other escaped character
      return "\\u003e";
  }
}

// A well-formed two-byte UTF-8 sequence at `at` (U+0080 to U+07FF) that protobuf prints as it
// stands: from U+00A0 on (below are control characters, which it escapes), except the soft
// hyphen and the Arabic and Syriac format characters, which it escapes too. "°C" and "µs" are
// of this kind; longer sequences, where its rules grow, are left to it.
bool JsonText::isPlainTwoByteCharacter(std::string_view text, std::size_t at) {
  if (at + 1 >= text.size()) {
    return false;
  }
  const auto lead = static_cast<unsigned char>(text[at]);
  const auto trail = static_cast<unsigned char>(text[at + 1]);
  if (lead < 0xc2 || lead > 0xdf || (trail & 0xc0) != 0x80) {
    return false;
  }
  const unsigned codePoint = ((lead & 0x1fu) << 6) | (trail & 0x3fu);
  return codePoint >= 0xa0 && codePoint != 0xad && !(codePoint >= 0x600 && codePoint <= 0x603) &&
         codePoint != 0x6dd && codePoint != 0x70f;
}

bool JsonText::appendFloat(float value, std::string& out) {
  if (!std::isfinite(value)) {
    return false;
  }
  appendShortest(value, FLT_DIG, FLT_DIG + 3, true, out);
  return true;
}

bool JsonText::appendDouble(double value, std::string& out) {
  if (!std::isfinite(value)) {
    return false;
  }
  char buffer[kMostWholeNumberText];
  if (char* end = tryWriteWholeNumber(value, buffer)) {
    out.append(buffer, end);
    return true;
  }
  appendShortest(value, DBL_DIG, DBL_DIG + 2, false, out);
  return true;
}

// A whole number below 10^15 in size prints as its digits under "%.15g" (no exponent, no
// fraction), and they read back exactly: the common case of the graphs, written directly.
// Negative zero keeps its sign as protobuf prints it, so it takes the general way.
// Within the range the conversion to an integer is defined, and a number that converts back to
// itself is whole (one conversion each way, where std::trunc may be a call).
char* JsonText::tryWriteWholeNumber(double value, char* at) {
  if (!(value > -1e15 && value < 1e15)) {
    return nullptr;
  }
  const auto whole = static_cast<long long>(value);
  if (static_cast<double>(whole) != value || (whole == 0 && std::signbit(value))) {
    return nullptr;
  }
  return std::to_chars(at, at + kMostWholeNumberText, whole).ptr;
}

void JsonText::appendBytes(std::string_view bytes, std::string& out) {
  std::string encoded;
  google::protobuf::Base64Escape(google::protobuf::StringPiece(bytes.data(), bytes.size()),
                                 &encoded);
  out += '"';
  out += encoded;
  out += '"';
}

}  // namespace halvor::kelo
