#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tavelabi/ResourceValue.h"

namespace halvor::protobuf {

// Fills one field of a message from the host value found under its key, where the generic
// conversion does not fit the message.
using FieldReader = std::function<void(google::protobuf::Message& message,
                                       const google::protobuf::FieldDescriptor& field,
                                       const tavelabi::ResourceValue& value)>;

// Where the factory of one message differs from the generic rule. Fields are named as in the
// schema. Rules are plain data: a message whose factory needs them gets an entry in
// factoryRulesOf (FactoryRules.cpp), written as a chain:
//   FactoryRules().readFrom("active", {"value", "active"}).keepOverride("device")
struct FactoryRules {
  // The keys of the host resource that feed a field, the first present one winning. Without an
  // entry, a field's key is its JSON name.
  std::map<std::string, std::vector<std::string>> keys;
  // Fields never taken from the resource: only their override fills them.
  std::set<std::string> overrideOnly;
  // When a resource is given, every field read from it must have its key there; a missing key
  // throws std::out_of_range with "map::at", as a read with the map's at would.
  bool keysRequired = false;
  // Fields filled by a reader of their own instead of the generic conversion.
  std::map<std::string, FieldReader> readers;

  FactoryRules& readFrom(const std::string& field, std::vector<std::string> fieldKeys) {
    keys[field] = std::move(fieldKeys);
    return *this;
  }
  FactoryRules& keepOverride(const std::string& field) {
    overrideOnly.insert(field);
    return *this;
  }
  FactoryRules& requireKeys() {
    keysRequired = true;
    return *this;
  }
  FactoryRules& readWith(const std::string& field, FieldReader reader) {
    readers[field] = std::move(reader);
    return *this;
  }
};

// The rules of a message by its descriptor; empty rules (the generic rule alone) for a message
// without an entry.
const FactoryRules& factoryRulesOf(const google::protobuf::Descriptor& descriptor);

}  // namespace halvor::protobuf
