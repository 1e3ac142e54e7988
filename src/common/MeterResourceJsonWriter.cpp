#include "kelo/common/MeterResourceJsonWriter.h"

#include <string>
#include <string_view>

#include "kelo/common/JsonText.h"

namespace halvor::kelo {

namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

bool absentOr(const ResourceValue* value, ResourceValueType type) {
  return value == nullptr || value->getType() == type;
}

bool isNumber(ResourceValueType type) {
  return type == ResourceValueType::FLOAT || type == ResourceValueType::DOUBLE ||
         type == ResourceValueType::INT32;
}

bool absentOrNumber(const ResourceValue* value) {
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

// One pass over the resource's keys (a meter has about ten) instead of a lookup of each name:
// every lookup of the ordered map compares texts several times.
MeterResourceJsonWriter::Keys MeterResourceJsonWriter::keysOf(const Resource& resource) {
  Keys keys;
  for (const auto& [name, value] : resource.values) {
    const std::string_view key = name;
    if (key == "guid") {
      keys.guid = &value;
    } else if (key == "path") {
      keys.path = &value;
    } else if (key == "value") {
      keys.value = &value;
    } else if (key == "units") {
      keys.units = &value;
    } else if (key == "min") {
      keys.min = &value;
    } else if (key == "max") {
      keys.max = &value;
    } else if (key == "label") {
      keys.label = &value;
    } else if (key == "digitsToDisplay") {
      keys.digitsToDisplay = &value;
    } else if (key == "deviceName") {
      keys.deviceName = &value;
    } else if (key == "deviceId") {
      keys.deviceId = &value;
    }
  }
  return keys;
}

bool MeterResourceJsonWriter::isPlainMeter(const Resource& meter) {
  return isPlainMeter(keysOf(meter));
}

bool MeterResourceJsonWriter::isPlainGroup(const Resource& group) {
  return isPlainGroup(keysOf(group));
}

bool MeterResourceJsonWriter::isPlainCollection(const Resource& collection) {
  return isPlainCollection(keysOf(collection));
}

bool MeterResourceJsonWriter::isPlainMeter(const Keys& keys) {
  const bool deviceIdPlain =
      keys.deviceId == nullptr ||
      (absentOr(keys.deviceId, ResourceValueType::STRING) && keys.deviceName != nullptr);
  return absentOr(keys.guid, ResourceValueType::STRING) &&
         absentOr(keys.path, ResourceValueType::STRING) &&
         (keys.value == nullptr || isPlainReading(*keys.value)) &&
         absentOr(keys.units, ResourceValueType::STRING) && absentOrNumber(keys.min) &&
         absentOrNumber(keys.max) && absentOr(keys.label, ResourceValueType::STRING) &&
         absentOr(keys.digitsToDisplay, ResourceValueType::INT32) &&
         absentOr(keys.deviceName, ResourceValueType::STRING) && deviceIdPlain;
}

bool MeterResourceJsonWriter::isPlainGroup(const Keys& keys) {
  return absentOr(keys.guid, ResourceValueType::STRING) &&
         absentOr(keys.path, ResourceValueType::STRING) &&
         absentOr(keys.label, ResourceValueType::STRING);
}

bool MeterResourceJsonWriter::isPlainCollection(const Keys& keys) {
  return absentOr(keys.path, ResourceValueType::STRING) &&
         absentOr(keys.label, ResourceValueType::STRING);
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
  const Keys keys = keysOf(collection.collection);
  if (!isPlainCollection(keys)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (!printText(keys.path, "\"path\":", members) ||
      !printText(keys.label, "\"label\":", members)) {
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
  const Keys keys = keysOf(group.group);
  if (!isPlainGroup(keys)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (!printText(keys.guid, "\"guid\":", members) || !printText(keys.path, "\"path\":", members) ||
      !printText(keys.label, "\"label\":", members)) {
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
  const Keys keys = keysOf(meter);
  if (!isPlainMeter(keys)) {
    return false;
  }
  out += '{';
  Members members(out);
  if (!printText(keys.guid, "\"guid\":", members) || !printText(keys.path, "\"path\":", members)) {
    return false;
  }
  if (keys.value != nullptr) {
    // A Resource message holding the reading under "value".
    members.next("\"value\":{\"values\":{\"value\":");
    if (!printReading(*keys.value, out)) {
      return false;
    }
    out += "}}";
  }
  if (!printText(keys.units, "\"units\":", members) ||
      !printNumber(keys.min, "\"min\":", members) || !printNumber(keys.max, "\"max\":", members) ||
      !printText(keys.label, "\"label\":", members)) {
    return false;
  }
  if (keys.digitsToDisplay != nullptr) {
    members.next("\"digitsToDisplay\":") += std::to_string(keys.digitsToDisplay->getIntValue());
  }
  members.next("\"device\":");
  if (!printDevice(keys, out)) {
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
bool MeterResourceJsonWriter::printDevice(const Keys& keys, std::string& out) {
  out += '{';
  Members members(out);
  if (keys.deviceId != nullptr &&
      !JsonText::appendString(keys.deviceName->getStringValue() + keys.deviceId->getStringValue(),
                              members.next("\"guid\":"))) {
    return false;
  }
  if (keys.deviceName != nullptr &&
      !JsonText::appendString(keys.deviceName->getStringValue(), members.next("\"name\":"))) {
    return false;
  }
  out += '}';
  return true;
}

bool MeterResourceJsonWriter::printText(const ResourceValue* value, const char* quotedNameAndColon,
                                        Members& members) {
  return value == nullptr ||
         JsonText::appendString(value->getStringValue(), members.next(quotedNameAndColon));
}

bool MeterResourceJsonWriter::printNumber(const ResourceValue* value,
                                          const char* quotedNameAndColon, Members& members) {
  return value == nullptr ||
         JsonText::appendDouble(numberOf(*value), members.next(quotedNameAndColon));
}

}  // namespace halvor::kelo
