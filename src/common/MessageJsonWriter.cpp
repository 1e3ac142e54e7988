#include "kelo/common/MessageJsonWriter.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"
#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonText.h"
#include "kelo/common/MeterJsonWriter.h"
#include "kelo/common/PointJsonWriter.h"
#include "kelo/common/ResourceDepth.h"
#include "kelo/common/ResourceJsonWriter.h"

namespace halvor::kelo {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

constexpr std::string_view kWellKnownFolder = "google/protobuf/";

}  // namespace

bool MessageJsonWriter::tryPrint(const Message& message, std::string& out) {
  return writeNested(message, 0, out);
}

// A message as a member's value: wrappers print bare, Resource through its own printer.
bool MessageJsonWriter::writeNested(const Message& message, int depth, std::string& out) {
  if (depth > kMaxNesting) {
    return false;
  }
  const Descriptor& descriptor = *message.GetDescriptor();
  if (isWrapper(descriptor)) {
    return writeWrapper(message, out);
  }
  if (isOtherWellKnownType(descriptor)) {
    return false;
  }
  bool written = false;
  if (!writeWithOwnPrinter(message, depth, out, written)) {
    return false;
  }
  return written || writeMessage(message, depth, out);
}

// Members in field number order; ListFields gives exactly those that the serialisation holds.
bool MessageJsonWriter::writeMessage(const Message& message, int depth, std::string& out) {
  const Reflection& reflection = *message.GetReflection();
  if (!reflection.GetUnknownFields(message).empty()) {
    return false;
  }
  std::vector<const FieldDescriptor*> fields;
  reflection.ListFields(message, &fields);
  out += '{';
  bool first = true;
  for (const FieldDescriptor* field : fields) {
    if (field->is_extension()) {
      return false;
    }
    if (!first) {
      out += ',';
    }
    first = false;
    if (!writeMember(message, *field, depth, out)) {
      return false;
    }
  }
  out += '}';
  return true;
}

bool MessageJsonWriter::writeMember(const Message& message, const Field& field, int depth,
                                    std::string& out) {
  out += '"';
  out += field.json_name();
  out += "\":";
  if (field.is_map()) {
    return writeMap(message, field, depth, out);
  }
  if (!field.is_repeated()) {
    return writeValue(message, field, -1, depth, out);
  }
  if (isPointList(message, field)) {
    return PointJsonWriter::tryPrint(
        message.GetReflection()->GetRepeatedFieldRef<protobuf::Point>(message, &field), depth + 1,
        out);
  }
  out += '[';
  const int size = message.GetReflection()->FieldSize(message, &field);
  for (int i = 0; i < size; ++i) {
    if (i > 0) {
      out += ',';
    }
    if (!writeValue(message, field, i, depth, out)) {
      return false;
    }
  }
  out += ']';
  return true;
}

// Text keys in byte order, as std::string compares them: the order of protobuf's deterministic
// serialisation. An entry is a message of its own, and so is its value.
bool MessageJsonWriter::writeMap(const Message& message, const Field& field, int depth,
                                 std::string& out) {
  const Descriptor& entry = *field.message_type();
  const FieldDescriptor& key = *entry.map_key();
  const FieldDescriptor& value = *entry.map_value();
  if (key.cpp_type() != FieldDescriptor::CPPTYPE_STRING ||
      value.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE || depth + 2 > kMaxNesting) {
    return false;
  }
  const Reflection& reflection = *message.GetReflection();
  const int size = reflection.FieldSize(message, &field);
  std::vector<std::pair<std::string, const Message*>> entries;
  entries.reserve(static_cast<std::size_t>(size));
  for (int i = 0; i < size; ++i) {
    const Message& element = reflection.GetRepeatedMessage(message, &field, i);
    const Reflection& entryReflection = *element.GetReflection();
    entries.emplace_back(entryReflection.GetString(element, &key),
                         &entryReflection.GetMessage(element, &value));
  }
  // Entries added by reflection may repeat a key; the map keeps the last of them.
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  for (std::size_t i = 0; i + 1 < entries.size();) {
    if (entries[i].first == entries[i + 1].first) {
      entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      ++i;
    }
  }
  out += '{';
  bool first = true;
  for (const auto& [text, element] : entries) {
    if (!first) {
      out += ',';
    }
    first = false;
    if (!JsonText::appendString(text, out)) {
      return false;
    }
    out += ':';
    if (!writeNested(*element, depth + 2, out)) {
      return false;
    }
  }
  out += '}';
  return true;
}

bool MessageJsonWriter::writeValue(const Message& message, const Field& field, int index, int depth,
                                   std::string& out) {
  const Reflection& r = *message.GetReflection();
  const bool one = index < 0;
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_INT32:
      out += std::to_string(one ? r.GetInt32(message, &field)
                                : r.GetRepeatedInt32(message, &field, index));
      return true;
    case FieldDescriptor::CPPTYPE_UINT32:
      out += std::to_string(one ? r.GetUInt32(message, &field)
                                : r.GetRepeatedUInt32(message, &field, index));
      return true;
    case FieldDescriptor::CPPTYPE_INT64:
      out += '"';
      out += std::to_string(one ? r.GetInt64(message, &field)
                                : r.GetRepeatedInt64(message, &field, index));
      out += '"';
      return true;
    case FieldDescriptor::CPPTYPE_UINT64:
      out += '"';
      out += std::to_string(one ? r.GetUInt64(message, &field)
                                : r.GetRepeatedUInt64(message, &field, index));
      out += '"';
      return true;
    case FieldDescriptor::CPPTYPE_BOOL:
      out += (one ? r.GetBool(message, &field) : r.GetRepeatedBool(message, &field, index))
                 ? "true"
                 : "false";
      return true;
    case FieldDescriptor::CPPTYPE_FLOAT:
      return JsonText::appendFloat(
          one ? r.GetFloat(message, &field) : r.GetRepeatedFloat(message, &field, index), out);
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return JsonText::appendDouble(
          one ? r.GetDouble(message, &field) : r.GetRepeatedDouble(message, &field, index), out);
    case FieldDescriptor::CPPTYPE_STRING: {
      std::string scratch;
      const std::string& text =
          one ? r.GetStringReference(message, &field, &scratch)
              : r.GetRepeatedStringReference(message, &field, index, &scratch);
      if (field.type() == FieldDescriptor::TYPE_BYTES) {
        JsonText::appendBytes(text, out);
        return true;
      }
      return JsonText::appendString(text, out);
    }
    case FieldDescriptor::CPPTYPE_ENUM: {
      const auto* value =
          one ? r.GetEnum(message, &field) : r.GetRepeatedEnum(message, &field, index);
      // An open enum's number without a name comes back as a value of its own, unnamed.
      if (value == nullptr || value->type()->file()->name().rfind(kWellKnownFolder, 0) == 0 ||
          field.enum_type()->FindValueByNumber(value->number()) != value) {
        return false;
      }
      out += '"';
      out += value->name();
      out += '"';
      return true;
    }
    case FieldDescriptor::CPPTYPE_MESSAGE:
      return writeNested(
          one ? r.GetMessage(message, &field) : r.GetRepeatedMessage(message, &field, index),
          depth + 1, out);
  }
  return false;
}

// A wrapper prints as its value, also when that value is the default.
bool MessageJsonWriter::writeWrapper(const Message& wrapper, std::string& out) {
  const FieldDescriptor* value = wrapper.GetDescriptor()->FindFieldByNumber(1);
  if (value == nullptr || !wrapper.GetReflection()->GetUnknownFields(wrapper).empty()) {
    return false;
  }
  return writeValue(wrapper, *value, -1, 0, out);
}

// Messages that are printed often and in numbers have printers of their own, which use the
// messages' accessors instead of reflection. A Resource, whose values a client writes and which
// can nest deeply, goes to its printer only when its deepest value stays within kMaxNesting: a
// map entry, then per level of values a value and at most one map entry, then a wrapper.
bool MessageJsonWriter::writeWithOwnPrinter(const Message& message, int depth, std::string& out,
                                            bool& written) {
  const Descriptor* descriptor = message.GetDescriptor();
  written = true;
  if (descriptor == protobuf::Resource::descriptor()) {
    const auto* resource = dynamic_cast<const protobuf::Resource*>(&message);
    if (resource != nullptr && depth + 2 * ResourceDepth::of(*resource) + 2 <= kMaxNesting) {
      return ResourceJsonWriter::tryPrint(*resource, out);
    }
  } else if (descriptor == protobuf::MeterCollectionList::descriptor()) {
    if (const auto* list = dynamic_cast<const protobuf::MeterCollectionList*>(&message)) {
      return MeterJsonWriter::tryPrint(*list, depth, out);
    }
  } else if (descriptor == protobuf::MeterCollection::descriptor()) {
    if (const auto* collection = dynamic_cast<const protobuf::MeterCollection*>(&message)) {
      return MeterJsonWriter::tryPrint(*collection, depth, out);
    }
  } else if (descriptor == protobuf::MeterGroup::descriptor()) {
    if (const auto* group = dynamic_cast<const protobuf::MeterGroup*>(&message)) {
      return MeterJsonWriter::tryPrint(*group, depth, out);
    }
  } else if (descriptor == protobuf::Meter::descriptor()) {
    if (const auto* meter = dynamic_cast<const protobuf::Meter*>(&message)) {
      return MeterJsonWriter::tryPrint(*meter, depth, out);
    }
  }
  written = false;
  return true;
}

// The graphs hold thousands of points each: a list of them goes to PointJsonWriter when its
// elements are generated messages (a dynamic message of the same type holds other objects).
bool MessageJsonWriter::isPointList(const Message& message, const Field& field) {
  static const Descriptor* const kPoint = protobuf::Point::descriptor();
  if (field.message_type() != kPoint) {
    return false;
  }
  const Reflection& reflection = *message.GetReflection();
  return reflection.FieldSize(message, &field) > 0 &&
         dynamic_cast<const protobuf::Point*>(&reflection.GetRepeatedMessage(message, &field, 0)) !=
             nullptr;
}

// Every message of protobuf's wrappers file is a wrapper of one value.
bool MessageJsonWriter::isWrapper(const Descriptor& descriptor) {
  return descriptor.file()->name() == "google/protobuf/wrappers.proto";
}

bool MessageJsonWriter::isOtherWellKnownType(const Descriptor& descriptor) {
  return descriptor.file()->name().rfind(kWellKnownFolder, 0) == 0;
}

}  // namespace halvor::kelo
