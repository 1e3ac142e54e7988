#include "kelo/common/ResourceJsonWriter.h"

#include <algorithm>
#include <vector>

#include "kelo/common/JsonOptions.h"
#include "kelo/common/JsonText.h"
#include "kelo/common/ResourceDepth.h"

namespace halvor::kelo {

std::string ResourceJsonWriter::print(const protobuf::Resource& message) {
  std::string out;
  out.reserve(512);
  if (tryPrint(message, out)) {
    return out;
  }
  ResourceDepth::check(message);
  return JsonOptions::protobufJson(message);
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
    if (!JsonText::appendString(message.path().value(), out)) {
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
    if (!JsonText::appendString(entry->first, out)) {
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
    if (!JsonText::appendString(value.stringvalue().value(), out)) {
      return false;
    }
  }
  if (value.has_boolvalue()) {
    member(value.boolvalue().value() ? "\"boolValue\":true" : "\"boolValue\":false");
  }
  if (value.has_floatvalue()) {
    member("\"floatValue\":");
    if (!JsonText::appendFloat(value.floatvalue().value(), out)) {
      return false;
    }
  }
  if (value.has_doublevalue()) {
    member("\"doubleValue\":");
    if (!JsonText::appendDouble(value.doublevalue().value(), out)) {
      return false;
    }
  }
  if (value.has_intvalue()) {
    member("\"intValue\":");
    out += std::to_string(value.intvalue().value());
  }
  if (value.has_bytesvalue()) {
    member("\"bytesValue\":");
    JsonText::appendBytes(value.bytesvalue().value(), out);
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

}  // namespace halvor::kelo
