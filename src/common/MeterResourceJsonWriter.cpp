#include "kelo/common/MeterResourceJsonWriter.h"

#include <string>

#include "kelo/common/JsonText.h"

namespace halvor::kelo {

namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

// The value under the key, or nullptr.
const ResourceValue* valueOf(const Resource& resource, const char* key) {
  const auto found = resource.values.find(key);
  return found == resource.values.end() ? nullptr : &found->second;
}

bool absentOr(const Resource& resource, const char* key, ResourceValueType type) {
  const ResourceValue* value = valueOf(resource, key);
  return value == nullptr || value->getType() == type;
}

bool isNumber(ResourceValueType type) {
  return type == ResourceValueType::FLOAT || type == ResourceValueType::DOUBLE ||
         type == ResourceValueType::INT32;
}

bool absentOrNumber(const Resource& resource, const char* key) {
  const ResourceValue* value = valueOf(resource, key);
  return value == nullptr || isNumber(value->getType());
}

bool isPlainReading(const ResourceValue& reading) {
  const ResourceValueType type = reading.getType();
  return isNumber(type) || type == ResourceValueType::BOOL || type == ResourceValueType::STRING;
}

// The number as the factories read a DoubleValue: a FLOAT or INT32 widened to double.
double numberOf(const ResourceValue& value) {
  switch (value.getType()) {
    case ResourceValueType::FLOAT:
      return value.getFloatValue();
    case ResourceValueType::INT32:
      return value.getIntValue();
    default:
      return value.getDoubleValue();
  }
}

}  // namespace

std::string& MeterResourceJsonWriter::Members::next(const char* quotedNameAndColon) {
  if (!first_) {
    out_ += ',';
  }
  first_ = false;
  out_ += quotedNameAndColon;
  return out_;
}

bool MeterResourceJsonWriter::isPlainMeter(const Resource& meter) {
  const ResourceValue* reading = valueOf(meter, "value");
  const bool deviceIdPlain = valueOf(meter, "deviceId") == nullptr ||
                             (absentOr(meter, "deviceId", ResourceValueType::STRING) &&
                              valueOf(meter, "deviceName") != nullptr);
  return absentOr(meter, "guid", ResourceValueType::STRING) &&
         absentOr(meter, "path", ResourceValueType::STRING) &&
         (reading == nullptr || isPlainReading(*reading)) &&
         absentOr(meter, "units", ResourceValueType::STRING) && absentOrNumber(meter, "min") &&
         absentOrNumber(meter, "max") && absentOr(meter, "label", ResourceValueType::STRING) &&
         absentOr(meter, "digitsToDisplay", ResourceValueType::INT32) &&
         absentOr(meter, "deviceName", ResourceValueType::STRING) && deviceIdPlain;
}

bool MeterResourceJsonWriter::isPlainGroup(const Resource& group) {
  return absentOr(group, "guid", ResourceValueType::STRING) &&
         absentOr(group, "path", ResourceValueType::STRING) &&
         absentOr(group, "label", ResourceValueType::STRING);
}

bool MeterResourceJsonWriter::isPlainCollection(const Resource& collection) {
  return absentOr(collection, "path", ResourceValueType::STRING) &&
         absentOr(collection, "label", ResourceValueType::STRING);
}

bool MeterResourceJsonWriter::tryPrint(const std::vector<MeterCollectionReading>& collections,
                                       std::string& out) {
  out += '{';
  if (!collections.empty()) {
    out += "\"collections\":[";
    bool first = true;
    for (const MeterCollectionReading& collection : collections) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!printCollection(collection, out)) {
        return false;
      }
    }
    out += ']';
  }
  out += '}';
  return true;
}

// Members in the message's field order: path, label, groups.
bool MeterResourceJsonWriter::printCollection(const MeterCollectionReading& collection,
                                              std::string& out) {
  if (!isPlainCollection(collection.collection)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (!printText(collection.collection, "path", "\"path\":", members) ||
      !printText(collection.collection, "label", "\"label\":", members)) {
    return false;
  }
  if (!collection.groups.empty()) {
    members.next("\"groups\":[");
    bool first = true;
    for (const MeterGroupReading& group : collection.groups) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!printGroup(group, out)) {
        return false;
      }
    }
    out += ']';
  }
  out += '}';
  return true;
}

// Members in the message's field order: guid, path, label, meters.
bool MeterResourceJsonWriter::printGroup(const MeterGroupReading& group, std::string& out) {
  if (!isPlainGroup(group.group)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (!printText(group.group, "guid", "\"guid\":", members) ||
      !printText(group.group, "path", "\"path\":", members) ||
      !printText(group.group, "label", "\"label\":", members)) {
    return false;
  }
  if (!group.meters.empty()) {
    members.next("\"meters\":[");
    bool first = true;
    for (const Resource& meter : group.meters) {
      if (!first) {
        out += ',';
      }
      first = false;
      if (!printMeter(meter, out)) {
        return false;
      }
    }
    out += ']';
  }
  out += '}';
  return true;
}

// Members in the message's field order: guid, path, value, units, min, max, label,
// digitsToDisplay, device. The device is always there, empty when the meter names none.
bool MeterResourceJsonWriter::printMeter(const Resource& meter, std::string& out) {
  if (!isPlainMeter(meter)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (!printText(meter, "guid", "\"guid\":", members) ||
      !printText(meter, "path", "\"path\":", members)) {
    return false;
  }
  if (const ResourceValue* reading = valueOf(meter, "value")) {
    // A Resource message holding the reading under "value".
    members.next("\"value\":{\"values\":{\"value\":");
    if (!printReading(*reading, out)) {
      return false;
    }
    out += "}}";
  }
  if (!printText(meter, "units", "\"units\":", members) ||
      !printNumber(meter, "min", "\"min\":", members) ||
      !printNumber(meter, "max", "\"max\":", members) ||
      !printText(meter, "label", "\"label\":", members)) {
    return false;
  }
  if (const ResourceValue* digits = valueOf(meter, "digitsToDisplay")) {
    members.next("\"digitsToDisplay\":") += std::to_string(digits->getIntValue());
  }
  members.next("\"device\":");
  if (!printDevice(meter, out)) {
    return false;
  }
  out += '}';
  return true;
}

// A ResourceValue message: its one typed member, then its type.
bool MeterResourceJsonWriter::printReading(const ResourceValue& reading, std::string& out) {
  switch (reading.getType()) {
    case ResourceValueType::STRING:
      out += "{\"stringValue\":";
      if (!JsonText::appendString(reading.getStringValue(), out)) {
        return false;
      }
      out += ",\"type\":\"STRING\"}";
      return true;
    case ResourceValueType::BOOL:
      out += reading.getBoolValue() ? "{\"boolValue\":true,\"type\":\"BOOL\"}"
                                    : "{\"boolValue\":false,\"type\":\"BOOL\"}";
      return true;
    case ResourceValueType::FLOAT:
      out += "{\"floatValue\":";
      if (!JsonText::appendFloat(reading.getFloatValue(), out)) {
        return false;
      }
      out += ",\"type\":\"FLOAT\"}";
      return true;
    case ResourceValueType::DOUBLE:
      out += "{\"doubleValue\":";
      if (!JsonText::appendDouble(reading.getDoubleValue(), out)) {
        return false;
      }
      out += ",\"type\":\"DOUBLE\"}";
      return true;
    case ResourceValueType::INT32:
      out += "{\"intValue\":";
      out += std::to_string(reading.getIntValue());
      out += ",\"type\":\"INT32\"}";
      return true;
    default:
      return false;
  }
}

// The device's GUID is its name directly followed by its id; then its name.
bool MeterResourceJsonWriter::printDevice(const Resource& meter, std::string& out) {
  const ResourceValue* name = valueOf(meter, "deviceName");
  const ResourceValue* id = valueOf(meter, "deviceId");
  out += '{';
  Members members(out);
  if (id != nullptr && !JsonText::appendString(name->getStringValue() + id->getStringValue(),
                                               members.next("\"guid\":"))) {
    return false;
  }
  if (name != nullptr &&
      !JsonText::appendString(name->getStringValue(), members.next("\"name\":"))) {
    return false;
  }
  out += '}';
  return true;
}

bool MeterResourceJsonWriter::printText(const Resource& resource, const char* key,
                                        const char* quotedNameAndColon, Members& members) {
  const ResourceValue* value = valueOf(resource, key);
  return value == nullptr ||
         JsonText::appendString(value->getStringValue(), members.next(quotedNameAndColon));
}

bool MeterResourceJsonWriter::printNumber(const Resource& resource, const char* key,
                                          const char* quotedNameAndColon, Members& members) {
  const ResourceValue* value = valueOf(resource, key);
  return value == nullptr ||
         JsonText::appendDouble(numberOf(*value), members.next(quotedNameAndColon));
}

}  // namespace halvor::kelo
