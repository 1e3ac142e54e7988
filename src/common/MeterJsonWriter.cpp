#include "kelo/common/MeterJsonWriter.h"

#include "kelo/common/JsonText.h"
#include "kelo/common/MessageJsonWriter.h"
#include "kelo/common/ResourceDepth.h"
#include "kelo/common/ResourceJsonWriter.h"
#include "kelo/common/UnknownFields.h"

namespace halvor::kelo {

std::string& MeterJsonWriter::Members::next(const char* quotedNameAndColon) {
  if (!first_) {
    out_ += ',';
  }
  first_ = false;
  out_ += quotedNameAndColon;
  return out_;
}

bool MeterJsonWriter::tryPrint(const protobuf::MeterCollectionList& list, int depth,
                               std::string& out) {
  if (depth > MessageJsonWriter::kMaxNesting || UnknownFields::any(list)) {
    return false;
  }
  out += '{';
  if (!list.collections().empty()) {
    out += "\"collections\":[";
    bool first = true;
    for (const protobuf::MeterCollection& collection : list.collections()) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!tryPrint(collection, depth + 1, out)) {
        return false;
      }
    }
    out += ']';
  }
  out += '}';
  return true;
}

bool MeterJsonWriter::tryPrint(const protobuf::MeterCollection& collection, int depth,
                               std::string& out) {
  if (depth + 1 > MessageJsonWriter::kMaxNesting || UnknownFields::any(collection)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (collection.has_path() && !writeText(collection.path(), members.next("\"path\":"))) {
    return false;
  }
  if (collection.has_label() && !writeText(collection.label(), members.next("\"label\":"))) {
    return false;
  }
  if (!collection.groups().empty()) {
    members.next("\"groups\":[");
    bool first = true;
    for (const protobuf::MeterGroup& group : collection.groups()) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!tryPrint(group, depth + 1, out)) {
        return false;
      }
    }
    out += ']';
  }
  out += '}';
  return true;
}

bool MeterJsonWriter::tryPrint(const protobuf::MeterGroup& group, int depth, std::string& out) {
  if (depth + 1 > MessageJsonWriter::kMaxNesting || UnknownFields::any(group)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (group.has_guid() && !writeText(group.guid(), members.next("\"guid\":"))) {
    return false;
  }
  if (group.has_path() && !writeText(group.path(), members.next("\"path\":"))) {
    return false;
  }
  if (group.has_label() && !writeText(group.label(), members.next("\"label\":"))) {
    return false;
  }
  if (!group.meters().empty()) {
    members.next("\"meters\":[");
    bool first = true;
    for (const protobuf::Meter& meter : group.meters()) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!tryPrint(meter, depth + 1, out)) {
        return false;
      }
    }
    out += ']';
  }
  out += '}';
  return true;
}

// The reading is a Resource one message down; ResourceJsonWriter prints it where its deepest
// value stays within the nesting limit (see MessageJsonWriter::writeResourceFast).
bool MeterJsonWriter::tryPrint(const protobuf::Meter& meter, int depth, std::string& out) {
  if (depth + 2 > MessageJsonWriter::kMaxNesting || UnknownFields::any(meter)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (meter.has_guid() && !writeText(meter.guid(), members.next("\"guid\":"))) {
    return false;
  }
  if (meter.has_path() && !writeText(meter.path(), members.next("\"path\":"))) {
    return false;
  }
  if (meter.has_value()) {
    const protobuf::Resource& value = meter.value();
    if (depth + 1 + 2 * ResourceDepth::of(value) + 2 > MessageJsonWriter::kMaxNesting ||
        UnknownFields::any(value) ||
        !ResourceJsonWriter::tryPrint(value, members.next("\"value\":"))) {
      return false;
    }
  }
  if (meter.has_units() && !writeText(meter.units(), members.next("\"units\":"))) {
    return false;
  }
  if (meter.has_min() && !writeNumber(meter.min(), members.next("\"min\":"))) {
    return false;
  }
  if (meter.has_max() && !writeNumber(meter.max(), members.next("\"max\":"))) {
    return false;
  }
  if (meter.has_label() && !writeText(meter.label(), members.next("\"label\":"))) {
    return false;
  }
  if (meter.has_digitstodisplay() &&
      !writeNumber(meter.digitstodisplay(), members.next("\"digitsToDisplay\":"))) {
    return false;
  }
  if (meter.has_device() && !tryPrint(meter.device(), members.next("\"device\":"))) {
    return false;
  }
  out += '}';
  return true;
}

bool MeterJsonWriter::tryPrint(const protobuf::Device& device, std::string& out) {
  if (UnknownFields::any(device)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (device.has_guid() && !writeText(device.guid(), members.next("\"guid\":"))) {
    return false;
  }
  if (device.has_name() && !writeText(device.name(), members.next("\"name\":"))) {
    return false;
  }
  out += '}';
  return true;
}

bool MeterJsonWriter::writeText(const google::protobuf::StringValue& text, std::string& out) {
  return !UnknownFields::any(text) && JsonText::appendString(text.value(), out);
}

bool MeterJsonWriter::writeNumber(const google::protobuf::DoubleValue& number, std::string& out) {
  return !UnknownFields::any(number) && JsonText::appendDouble(number.value(), out);
}

bool MeterJsonWriter::writeNumber(const google::protobuf::Int32Value& number, std::string& out) {
  if (UnknownFields::any(number)) {
    return false;
  }
  out += std::to_string(number.value());
  return true;
}

}  // namespace halvor::kelo
