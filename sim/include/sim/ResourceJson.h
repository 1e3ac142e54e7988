#pragma once

#include <json/value.h>

#include <string>

#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::sim {

// The typed JSON form of resources used by fixture files. A value is an object with exactly
// one key that names its type: {"int": 3}, {"string": "x"}, {"float": 1.5}, {"double": 2.5},
// {"bool": true}, {"bytes": [1, 2, 3]}, {"list": [<value>, ...]}, {"map": {"k": <value>}},
// {"unspecified": null}. A resource is an object from key to value.
// Errors throw std::invalid_argument with a text that names where in the document they are.
class ResourceJson {
 public:
  static tavelabi::ResourceValue valueFromJson(const Json::Value& json, const std::string& where);
  static tavelabi::Resource resourceFromJson(const Json::Value& json, const std::string& where);
  static Json::Value valueToJson(const tavelabi::ResourceValue& value);
  static Json::Value resourceToJson(const tavelabi::Resource& resource);
};

}  // namespace halvor::sim
