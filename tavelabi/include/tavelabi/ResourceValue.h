#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "tavelabi/Types.h"

namespace halvor::tavelabi {

// A variant with value semantics: copying a value copies everything it holds, lists and maps
// included. A getter of a type other than the one held throws WrongResourceValueType.
class ResourceValue {
 public:
  using ByteArray = std::vector<uint8_t>;
  using List = std::vector<ResourceValue>;
  using Map = std::map<std::string, ResourceValue>;

  ResourceValue();
  ResourceValue(const ResourceValue& other);
  ResourceValue(ResourceValue&& other) noexcept;
  ResourceValue(const bool& value);                // NOLINT(google-explicit-constructor)
  ResourceValue(const int& value);                 // NOLINT(google-explicit-constructor)
  ResourceValue(const double& value);              // NOLINT(google-explicit-constructor)
  ResourceValue(const std::string& value);         // NOLINT(google-explicit-constructor)
  // Without it a string literal would become a BOOL through the pointer conversion.
  ResourceValue(const char* value);                // NOLINT(google-explicit-constructor)
  ResourceValue(const std::vector<std::string>& value);  // NOLINT: a LIST_VALUE of STRINGs
  ResourceValue(const Map& value);                 // NOLINT(google-explicit-constructor)
  virtual ~ResourceValue();

  ResourceValue& operator=(const ResourceValue& other);
  ResourceValue& operator=(ResourceValue&& other) noexcept;

  ResourceValueType getType() const;
  // Gives the value the type and that type's empty content (false, 0, "", no elements).
  void setType(const ResourceValueType& type);

  // Each setter also makes the value of its own type.
  void setBoolValue(const bool& value);
  void setFloatValue(const float& value);
  void setDoubleValue(const double& value);
  void setIntValue(const int32_t& value);
  void setStringValue(const std::string& value);
  void setByteArray(const ByteArray& value);
  void setList(const List& value);
  void setMap(const Map& value);

  bool getBoolValue() const;
  float getFloatValue() const;
  double getDoubleValue() const;
  const int32_t& getIntValue() const;
  const std::string& getStringValue() const;
  // The first byte of the array (valid while the value lives and is not changed).
  const uint8_t* getByteArray() const;
  uint32_t getByteArraySize() const;
  const List& getListValue() const;
  const Map& getMapValue() const;

  bool operator==(const ResourceValue& other) const;

 private:
  // Lists and maps are boxed: the class is incomplete inside its own definition.
  template <typename T>
  struct Box {
    std::unique_ptr<T> ptr;
    Box() : ptr(std::make_unique<T>()) {}
    explicit Box(const T& value) : ptr(std::make_unique<T>(value)) {}
    Box(const Box& other) : ptr(std::make_unique<T>(*other.ptr)) {}
    Box(Box&&) noexcept = default;
    Box& operator=(const Box& other) {
      ptr = std::make_unique<T>(*other.ptr);
      return *this;
    }
    Box& operator=(Box&&) noexcept = default;
  };
  using Held = std::variant<std::monostate, bool, float, double, int32_t, ByteArray, Box<List>,
                            Box<Map>, std::string>;

  template <typename T>
  const T& held(ResourceValueType wanted) const;

  Held value_;
};

}  // namespace halvor::tavelabi
