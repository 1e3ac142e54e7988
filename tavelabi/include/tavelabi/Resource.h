#pragma once

#include <map>
#include <string>

#include "tavelabi/ResourceValue.h"

namespace halvor::tavelabi {

// An ordered map from key to value. A resource does not know its path: the path travels in the
// ResourceAction. A resource of one value holds it under the key "value".
class Resource {
 public:
  Resource();
  Resource(const ResourceValue& value);  // NOLINT(google-explicit-constructor): {"value": value}
  Resource(const std::string& key, const ResourceValue& value);
  virtual ~Resource();

  Resource(const Resource&) = default;
  Resource(Resource&&) noexcept = default;
  Resource& operator=(const Resource&) = default;
  Resource& operator=(Resource&&) noexcept = default;

  // Adds the key, or replaces the value of a key that is there.
  void addValue(const std::string& key, const ResourceValue& value);
  // Replaces the value of the key, adding it when it is not there.
  void updateValue(const std::string& key, const ResourceValue& value);
  // Removes the key; a key that is not there is no error.
  void removeValue(const std::string& key);

  std::map<std::string, ResourceValue> values;
};

}  // namespace halvor::tavelabi
