#include "kelo/common/ResourceJsonWriter.h"

#include <google/protobuf/stubs/strutil.h>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <system_error>
#include <vector>

#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceDepth.h"

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

std::string ResourceJsonWriter::print(const protobuf::Resource& message) {
  std::string out;
  out.reserve(512);
  if (tryPrint(message, out)) {
    return out;
  }
  ResourceDepth::check(message);
  return JsonOptions::toJson(message);
}

// Members are printed in field number order, members at their default left out, wrapper types
// as bare values, map entries in key order (as protobuf prints a deterministic serialisation).
bool ResourceJsonWriter::tryPrint(const protobuf::Resource& message, std::string& out) {
  out += '{';
  bool first = true;
  if (!message.values().empty()) {
    out += "\"values\":";
    if (!writeMap(message.values(), 0, out)) {
      return false;
    }
    first = false;
  }
  if (message.has_path()) {
    out += first ? "\"path\":" : ",\"path\":";
    if (!writeString(message.path().value(), out)) {
      return false;
    }
  }
  out += '}';
  return true;
}

bool ResourceJsonWriter::writeMap(const ValueMap& map, int depth, std::string& out) {
  out += '{';
  bool first = true;
  for (const ValueMap::value_type* entry : sortedEntries(map)) {
    if (!first) {
      out += ',';
    }
    first = false;
    if (!writeString(entry->first, out)) {
      return false;
    }
    out += ':';
    if (!writeValue(entry->second, depth + 1, out)) {
      return false;
    }
  }
  out += '}';
  return true;
}

// Byte order of the keys, as std::string compares them: the order of protobuf's deterministic
// serialisation.
std::vector<const ResourceJsonWriter::ValueMap::value_type*> ResourceJsonWriter::sortedEntries(
    const ValueMap& map) {
  std::vector<const ValueMap::value_type*> entries;
  entries.reserve(map.size());
  for (const auto& entry : map) {
    entries.push_back(&entry);
  }
  std::sort(entries.begin(), entries.end(),
            [](const auto* left, const auto* right) { return left->first < right->first; });
  return entries;
}

bool ResourceJsonWriter::writeValue(const protobuf::ResourceValue& value, int depth,
                                    std::string& out) {
  if (depth > ResourceDepth::kMaxDepth) {
    return false;
  }
  out += '{';
  const std::size_t start = out.size();
  auto member = [&out, start](const char* name) {
    if (out.size() != start) {
      out += ',';
    }
    out += name;
  };
  if (value.listvalue_size() > 0) {
    member("\"listValue\":[");
    bool first = true;
    for (const protobuf::ResourceValue& element : value.listvalue()) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!writeValue(element, depth + 1, out)) {
        return false;
      }
    }
    out += ']';
  }
  if (!value.mapvalue().empty()) {
    member("\"mapValue\":");
    if (!writeMap(value.mapvalue(), depth, out)) {
      return false;
    }
  }
  if (value.has_stringvalue()) {
    member("\"stringValue\":");
    if (!writeString(value.stringvalue().value(), out)) {
      return false;
    }
  }
  if (value.has_boolvalue()) {
    member(value.boolvalue().value() ? "\"boolValue\":true" : "\"boolValue\":false");
  }
  if (value.has_floatvalue()) {
    if (!std::isfinite(value.floatvalue().value())) {
      return false;
    }
    member("\"floatValue\":");
    appendShortest(value.floatvalue().value(), FLT_DIG, FLT_DIG + 3, true, out);
  }
  if (value.has_doublevalue()) {
    if (!std::isfinite(value.doublevalue().value())) {
      return false;
    }
    member("\"doubleValue\":");
    appendShortest(value.doublevalue().value(), DBL_DIG, DBL_DIG + 2, false, out);
  }
  if (value.has_intvalue()) {
    member("\"intValue\":");
    out += std::to_string(value.intvalue().value());
  }
  if (value.has_bytesvalue()) {
    member("\"bytesValue\":\"");
    std::string encoded;
    google::protobuf::Base64Escape(value.bytesvalue().value(), &encoded);
    out += encoded;
    out += '"';
  }
  if (value.type() != protobuf::ResourceValue::UNSPECIFIED_RESOURCE_TYPE) {
    const std::string& name = protobuf::ResourceValue::ValueType_Name(value.type());
    if (name.empty()) {
      return false;
    }
    member("\"type\":\"");
    out += name;
    out += '"';
  }
  out += '}';
  return true;
}

// Printable ASCII only, where protobuf's escaping is plain: '"' and '\\' get a backslash, '<'
// and '>' become \u003c and \u003e. Control characters and every byte above 0x7e, where its
// rules grow (UTF-8 checks, format characters), go to protobuf's printer.
bool ResourceJsonWriter::writeString(std::string_view text, std::string& out) {
  out += '"';
  for (const char c : text) {
    if (c < 0x20 || c > 0x7e) {
      return false;
    }
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '<':
        out += "\\u003c";
        break;
      case '>':
        out += "\\u003e";
        break;
      default:
        out += c;
    }
  }
  out += '"';
  return true;
}

}  // namespace halvor::kelo
