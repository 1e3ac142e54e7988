#include "tavelabi/ResourceValue.h"

#include <string>
#include <utility>

#include "tavelabi/Exceptions.h"

namespace halvor::tavelabi {

ResourceValue::ResourceValue() = default;

ResourceValue::ResourceValue(const ResourceValue& other) = default;

// The moved-from value becomes UNSPECIFIED rather than holding an empty box.
ResourceValue::ResourceValue(ResourceValue&& other) noexcept : value_(std::move(other.value_)) {
  other.value_.emplace<std::monostate>();
}

ResourceValue::ResourceValue(const bool& value) : value_(std::in_place_type<bool>, value) {}

ResourceValue::ResourceValue(const int& value) : value_(std::in_place_type<int32_t>, value) {}

ResourceValue::ResourceValue(const double& value) : value_(std::in_place_type<double>, value) {}

ResourceValue::ResourceValue(const std::string& value)
    : value_(std::in_place_type<std::string>, value) {}

ResourceValue::ResourceValue(const char* value)
    : value_(std::in_place_type<std::string>, value == nullptr ? "" : value) {}

ResourceValue::ResourceValue(const std::vector<std::string>& value)
    : value_(std::in_place_type<Box<List>>) {
  List& list = *std::get<Box<List>>(value_).ptr;
  list.reserve(value.size());
  for (const std::string& text : value) list.emplace_back(text);
}

ResourceValue::ResourceValue(const Map& value) : value_(std::in_place_type<Box<Map>>, value) {}

ResourceValue::~ResourceValue() = default;

// Copy first, then replace: the source may live inside this value (an element of its list).
ResourceValue& ResourceValue::operator=(const ResourceValue& other) {
  if (this != &other) {
    Held copy(other.value_);
    value_ = std::move(copy);
  }
  return *this;
}

ResourceValue& ResourceValue::operator=(ResourceValue&& other) noexcept {
  if (this != &other) {
    Held taken(std::move(other.value_));
    other.value_.emplace<std::monostate>();
    value_ = std::move(taken);
  }
  return *this;
}

ResourceValueType ResourceValue::getType() const {
  return static_cast<ResourceValueType>(value_.index());
}

void ResourceValue::setType(const ResourceValueType& type) {
  switch (type) {
    case ResourceValueType::UNSPECIFIED_RESOURCE_TYPE:
      value_.emplace<std::monostate>();
      return;
    case ResourceValueType::BOOL:
      value_.emplace<bool>(false);
      return;
    case ResourceValueType::FLOAT:
      value_.emplace<float>(0.0F);
      return;
    case ResourceValueType::DOUBLE:
      value_.emplace<double>(0.0);
      return;
    case ResourceValueType::INT32:
      value_.emplace<int32_t>(0);
      return;
    case ResourceValueType::UINT8_ARRAY:
      value_.emplace<ByteArray>();
      return;
    case ResourceValueType::LIST_VALUE:
      value_.emplace<Box<List>>();
      return;
    case ResourceValueType::MAP_VALUE:
      value_.emplace<Box<Map>>();
      return;
    case ResourceValueType::STRING:
      value_.emplace<std::string>();
      return;
  }
  throw WrongResourceValueType("setType: no ResourceValueType has the number " +
                               std::to_string(static_cast<int>(type)));
}

// Each setter builds the new content before it replaces the old, so that a value may be set
// from a part of itself.
void ResourceValue::setBoolValue(const bool& value) {
  value_ = Held(std::in_place_type<bool>, value);
}

void ResourceValue::setFloatValue(const float& value) {
  value_ = Held(std::in_place_type<float>, value);
}

void ResourceValue::setDoubleValue(const double& value) {
  value_ = Held(std::in_place_type<double>, value);
}

void ResourceValue::setIntValue(const int32_t& value) {
  value_ = Held(std::in_place_type<int32_t>, value);
}

void ResourceValue::setStringValue(const std::string& value) {
  value_ = Held(std::in_place_type<std::string>, value);
}

void ResourceValue::setByteArray(const ByteArray& value) {
  value_ = Held(std::in_place_type<ByteArray>, value);
}

void ResourceValue::setList(const List& value) {
  value_ = Held(std::in_place_type<Box<List>>, value);
}

void ResourceValue::setMap(const Map& value) { value_ = Held(std::in_place_type<Box<Map>>, value); }

template <typename T>
const T& ResourceValue::held(ResourceValueType wanted) const {
  const T* found = std::get_if<T>(&value_);
  if (found == nullptr) {
    throw WrongResourceValueType(std::string("ResourceValue holds ") + toString(getType()) +
                                 ", not the asked " + toString(wanted));
  }
  return *found;
}

bool ResourceValue::getBoolValue() const { return held<bool>(ResourceValueType::BOOL); }

float ResourceValue::getFloatValue() const { return held<float>(ResourceValueType::FLOAT); }

double ResourceValue::getDoubleValue() const { return held<double>(ResourceValueType::DOUBLE); }

const int32_t& ResourceValue::getIntValue() const {
  return held<int32_t>(ResourceValueType::INT32);
}

const std::string& ResourceValue::getStringValue() const {
  return held<std::string>(ResourceValueType::STRING);
}

const uint8_t* ResourceValue::getByteArray() const {
  return held<ByteArray>(ResourceValueType::UINT8_ARRAY).data();
}

uint32_t ResourceValue::getByteArraySize() const {
  return static_cast<uint32_t>(held<ByteArray>(ResourceValueType::UINT8_ARRAY).size());
}

const ResourceValue::List& ResourceValue::getListValue() const {
  return *held<Box<List>>(ResourceValueType::LIST_VALUE).ptr;
}

const ResourceValue::Map& ResourceValue::getMapValue() const {
  return *held<Box<Map>>(ResourceValueType::MAP_VALUE).ptr;
}

bool ResourceValue::operator==(const ResourceValue& other) const {
  if (value_.index() != other.value_.index()) return false;
  switch (getType()) {
    case ResourceValueType::UNSPECIFIED_RESOURCE_TYPE:
      return true;
    case ResourceValueType::BOOL:
      return getBoolValue() == other.getBoolValue();
    case ResourceValueType::FLOAT:
      return getFloatValue() == other.getFloatValue();
    case ResourceValueType::DOUBLE:
      return getDoubleValue() == other.getDoubleValue();
    case ResourceValueType::INT32:
      return getIntValue() == other.getIntValue();
    case ResourceValueType::UINT8_ARRAY:
      return std::get<ByteArray>(value_) == std::get<ByteArray>(other.value_);
    case ResourceValueType::LIST_VALUE:
      return getListValue() == other.getListValue();
    case ResourceValueType::MAP_VALUE:
      return getMapValue() == other.getMapValue();
    case ResourceValueType::STRING:
      return getStringValue() == other.getStringValue();
  }
  return false;
}

}  // namespace halvor::tavelabi
