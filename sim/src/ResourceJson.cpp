#include "sim/ResourceJson.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace halvor::sim {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

[[noreturn]] void fail(const std::string& where, const std::string& reason) {
  throw std::invalid_argument(where + ": " + reason);
}

ResourceValue typed(ResourceValueType type) {
  ResourceValue value;
  value.setType(type);
  return value;
}

ResourceValue intFromJson(const Json::Value& content, const std::string& where) {
  if (!content.isInt()) fail(where, "\"int\" needs a whole number in the 32-bit range");
  return ResourceValue(content.asInt());
}

ResourceValue floatFromJson(const Json::Value& content, const std::string& where) {
  if (!content.isNumeric()) fail(where, "\"float\" needs a number");
  ResourceValue value = typed(ResourceValueType::FLOAT);
  value.setFloatValue(content.asFloat());
  return value;
}

ResourceValue doubleFromJson(const Json::Value& content, const std::string& where) {
  if (!content.isNumeric()) fail(where, "\"double\" needs a number");
  ResourceValue value = typed(ResourceValueType::DOUBLE);
  value.setDoubleValue(content.asDouble());
  return value;
}

ResourceValue bytesFromJson(const Json::Value& content, const std::string& where) {
  if (!content.isArray()) fail(where, "\"bytes\" needs an array of numbers 0..255");
  ResourceValue::ByteArray bytes;
  for (Json::ArrayIndex i = 0; i < content.size(); ++i) {
    const Json::Value& byte = content[i];
    if (!byte.isInt() || byte.asInt() < 0 || byte.asInt() > 255) {
      fail(where + "[" + std::to_string(i) + "]", "a byte must be a whole number 0..255");
    }
    bytes.push_back(static_cast<std::uint8_t>(byte.asInt()));
  }
  ResourceValue value = typed(ResourceValueType::UINT8_ARRAY);
  value.setByteArray(bytes);
  return value;
}

ResourceValue listFromJson(const Json::Value& content, const std::string& where) {
  if (!content.isArray()) fail(where, "\"list\" needs an array of typed values");
  ResourceValue::List list;
  for (Json::ArrayIndex i = 0; i < content.size(); ++i) {
    list.push_back(ResourceJson::valueFromJson(content[i], where + "[" + std::to_string(i) + "]"));
  }
  ResourceValue value = typed(ResourceValueType::LIST_VALUE);
  value.setList(list);
  return value;
}

ResourceValue mapFromJson(const Json::Value& content, const std::string& where) {
  if (!content.isObject()) fail(where, "\"map\" needs an object of typed values");
  ResourceValue::Map map;
  for (const std::string& key : content.getMemberNames()) {
    map[key] = ResourceJson::valueFromJson(content[key], where + "." + key);
  }
  return ResourceValue(map);
}

}  // namespace

ResourceValue ResourceJson::valueFromJson(const Json::Value& json, const std::string& where) {
  if (!json.isObject() || json.size() != 1) {
    fail(where,
         "a value is an object with one key naming its type "
         "(int, string, float, double, bool, bytes, list, map, unspecified)");
  }
  const std::string type = json.getMemberNames().front();
  const Json::Value& content = json[type];
  if (type == "int") return intFromJson(content, where);
  if (type == "string") {
    if (!content.isString()) fail(where, "\"string\" needs a text");
    return ResourceValue(content.asString());
  }
  if (type == "bool") {
    if (!content.isBool()) fail(where, "\"bool\" needs true or false");
    return ResourceValue(content.asBool());
  }
  if (type == "float") return floatFromJson(content, where);
  if (type == "double") return doubleFromJson(content, where);
  if (type == "bytes") return bytesFromJson(content, where);
  if (type == "list") return listFromJson(content, where);
  if (type == "map") return mapFromJson(content, where);
  if (type == "unspecified") return ResourceValue();
  fail(where, "unknown value type \"" + type + "\"");
}

Resource ResourceJson::resourceFromJson(const Json::Value& json, const std::string& where) {
  if (!json.isObject()) fail(where, "a resource is an object from key to typed value");
  Resource resource;
  for (const std::string& key : json.getMemberNames()) {
    resource.values[key] = valueFromJson(json[key], where + "." + key);
  }
  return resource;
}

Json::Value ResourceJson::valueToJson(const ResourceValue& value) {
  Json::Value json(Json::objectValue);
  switch (value.getType()) {
    case ResourceValueType::UNSPECIFIED_RESOURCE_TYPE:
      json["unspecified"] = Json::Value();
      break;
    case ResourceValueType::BOOL:
      json["bool"] = value.getBoolValue();
      break;
    case ResourceValueType::FLOAT:
      json["float"] = value.getFloatValue();
      break;
    case ResourceValueType::DOUBLE:
      json["double"] = value.getDoubleValue();
      break;
    case ResourceValueType::INT32:
      json["int"] = value.getIntValue();
      break;
    case ResourceValueType::UINT8_ARRAY: {
      Json::Value bytes(Json::arrayValue);
      const std::uint8_t* data = value.getByteArray();
      for (std::uint32_t i = 0; i < value.getByteArraySize(); ++i) bytes.append(data[i]);
      json["bytes"] = bytes;
      break;
    }
    case ResourceValueType::LIST_VALUE: {
      Json::Value list(Json::arrayValue);
      for (const ResourceValue& element : value.getListValue()) list.append(valueToJson(element));
      json["list"] = list;
      break;
    }
    case ResourceValueType::MAP_VALUE: {
      Json::Value map(Json::objectValue);
      for (const auto& [key, element] : value.getMapValue()) map[key] = valueToJson(element);
      json["map"] = map;
      break;
    }
    case ResourceValueType::STRING:
      json["string"] = value.getStringValue();
      break;
  }
  return json;
}

Json::Value ResourceJson::resourceToJson(const Resource& resource) {
  Json::Value json(Json::objectValue);
  for (const auto& [key, value] : resource.values) json[key] = valueToJson(value);
  return json;
}

}  // namespace halvor::sim
