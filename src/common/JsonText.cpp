#include "kelo/common/JsonText.h"

#include <google/protobuf/stubs/strutil.h>

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

}  // namespace

bool JsonText::appendString(std::string_view text, std::string& out) {
  out += '"';
  std::size_t plain = 0;  // the start of the run of characters that need no escape
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c < 0x20 || c > 0x7e) {
      return false;
    }
    const char* escaped = nullptr;
    switch (c) {
      case '"':
        escaped = "\\\"";
        break;
      case '\\':
        escaped = "\\\\";
        break;
      case '<':
        escaped = "\\u003c";
        break;
      case '>':
        escaped = "\\u003e";
        break;
      default:
        continue;
    }
    out.append(text.data() + plain, i - plain);
    out += escaped;
    plain = i + 1;
  }
  out.append(text.data() + plain, text.size() - plain);
  out += '"';
  return true;
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
  appendShortest(value, DBL_DIG, DBL_DIG + 2, false, out);
  return true;
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
