#include "kelo/common/ResourceConverter.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "kelo/common/MessageBytes.h"
#include "kelo/common/ResourceDepth.h"

namespace halvor::kelo {

using MessageType = protobuf::ResourceValue;
using tavelabi::ResourceValueType;

tavelabi::ResourceValue ResourceConverter::toTavelAbiResourceValue(
    protobuf::ResourceValue message) {
  ResourceDepth::check(message);
  return toTavelAbiValue(std::move(message));
}

tavelabi::ResourceValue ResourceConverter::toTavelAbiValue(protobuf::ResourceValue message) {
  tavelabi::ResourceValue value;
  switch (message.type()) {
    case MessageType::BOOL:
      value.setType(ResourceValueType::BOOL);
      value.setBoolValue(message.boolvalue().value());
      break;
    case MessageType::FLOAT:
      value.setType(ResourceValueType::FLOAT);
      value.setFloatValue(message.floatvalue().value());
      break;
    case MessageType::DOUBLE:
      value.setType(ResourceValueType::DOUBLE);
      value.setDoubleValue(message.doublevalue().value());
      break;
    case MessageType::INT32:
      value.setType(ResourceValueType::INT32);
      value.setIntValue(message.intvalue().value());
      break;
    case MessageType::STRING:
      value.setType(ResourceValueType::STRING);
      value.setStringValue(message.stringvalue().value());
      break;
    case MessageType::LIST_VALUE: {
      value.setType(ResourceValueType::LIST_VALUE);
      if (message.listvalue().empty()) break;
      tavelabi::ResourceValue::List list;
      list.reserve(static_cast<size_t>(message.listvalue_size()));
      for (const protobuf::ResourceValue& element : message.listvalue()) {
        list.push_back(toTavelAbiValue(element));
      }
      value.setList(list);
      break;
    }
    case MessageType::MAP_VALUE: {
      value.setType(ResourceValueType::MAP_VALUE);
      if (message.mapvalue().empty()) break;
      tavelabi::ResourceValue::Map map;
      for (const auto& [key, element] : message.mapvalue()) {
        map[key] = toTavelAbiValue(element);
      }
      value.setMap(map);
      break;
    }
    case MessageType::SERIALIZED_RESOURCE_VALUE: {
      // The whole message travels as bytes; bytesValue is not looked at, so that a client can't
      // pass a plain byte string through this type. Equal messages give equal bytes.
      const std::string bytes = MessageBytes::of(message);
      value.setByteArray(tavelabi::ResourceValue::ByteArray(bytes.begin(), bytes.end()));
      break;
    }
    default:
      // A value without a known type is lost, whatever members it sets.
      break;
  }
  return value;
}

protobuf::ResourceValue ResourceConverter::toHalvorPbResourceValue(tavelabi::ResourceValue value) {
  protobuf::ResourceValue message;
  const ResourceValueType type = value.getType();
  if (type == ResourceValueType::BOOL) {
    message.set_type(MessageType::BOOL);
    message.mutable_boolvalue()->set_value(value.getBoolValue());
  } else if (type == ResourceValueType::FLOAT) {
    message.set_type(MessageType::FLOAT);
    message.mutable_floatvalue()->set_value(value.getFloatValue());
  } else if (type == ResourceValueType::DOUBLE) {
    message.set_type(MessageType::DOUBLE);
    message.mutable_doublevalue()->set_value(value.getDoubleValue());
  } else if (type == ResourceValueType::INT32) {
    message.set_type(MessageType::INT32);
    message.mutable_intvalue()->set_value(value.getIntValue());
  } else if (type == ResourceValueType::STRING) {
    message.set_type(MessageType::STRING);
    message.mutable_stringvalue()->set_value(value.getStringValue());
  } else if (type == ResourceValueType::UINT8_ARRAY) {
    // No type: the bytes reach a client, but a client's answer can't turn them back into bytes.
    const uint32_t size = value.getByteArraySize();
    const char* bytes = reinterpret_cast<const char*>(value.getByteArray());
    message.mutable_bytesvalue()->set_value(size == 0 ? std::string() : std::string(bytes, size));
  } else if (type == ResourceValueType::LIST_VALUE) {
    message.set_type(MessageType::LIST_VALUE);
    for (const tavelabi::ResourceValue& element : value.getListValue()) {
      *message.add_listvalue() = toHalvorPbResourceValue(element);
    }
  } else if (type == ResourceValueType::MAP_VALUE) {
    message.set_type(MessageType::MAP_VALUE);
    auto& map = *message.mutable_mapvalue();
    for (const auto& [key, element] : value.getMapValue()) {
      map[key] = toHalvorPbResourceValue(element);
    }
  }
  return message;
}

protobuf::Resource ResourceConverter::toHalvorPbResource(tavelabi::Resource resource) {
  protobuf::Resource message;
  auto& values = *message.mutable_values();
  // The resource is this call's own copy: its values move on instead of being copied again.
  for (auto& [key, value] : resource.values) {
    values[key] = toHalvorPbResourceValue(std::move(value));
  }
  return message;
}

tavelabi::Resource ResourceConverter::toTavelAbiResource(protobuf::Resource message) {
  ResourceDepth::check(message);
  std::map<std::string, tavelabi::ResourceValue> values;
  for (auto& [key, value] : *message.mutable_values()) {
    values[key] = toTavelAbiValue(std::move(value));
  }
  tavelabi::Resource resource;
  resource.values = std::move(values);
  return resource;
}

}  // namespace halvor::kelo
