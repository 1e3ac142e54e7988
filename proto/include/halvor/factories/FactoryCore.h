#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "halvor/factories/FactoryRules.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::protobuf {

// A host value whose type the field it is meant for cannot take.
class ResourceValueMismatch : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// The reflection behind every HalvorPbFactory2: how a host value becomes a field, and the rule
// "resource key, else override, else absent" applied to one message. Static members only.
class FactoryCore {
 public:
  FactoryCore() = delete;

  // Whether the generic conversion can fill the field from a host value: singular wrappers,
  // scalars, enums, Timestamp, ResourceValue and Resource. Repeated fields, maps and other
  // messages can't; they take their override, or a reader of the message's rules.
  static bool isReadable(const google::protobuf::FieldDescriptor& field);

  // Sets the field of message from value, replacing what it held. key names the value in the
  // error text. Throws ResourceValueMismatch when the value's type does not fit the field, and
  // std::logic_error for a field that isReadable refuses.
  static void assign(google::protobuf::Message& message,
                     const google::protobuf::FieldDescriptor& field,
                     const tavelabi::ResourceValue& value, const std::string& key);

  // The field of the message by its schema name; throws std::invalid_argument when there is none.
  static const google::protobuf::FieldDescriptor& fieldNamed(
      const google::protobuf::Descriptor& descriptor, const std::string& name);

  // The value of the first of the field's keys that the resource holds, or nullptr. Throws
  // std::out_of_range("map::at") when none is there and the rules require keys.
  static const tavelabi::ResourceValue* findValue(const google::protobuf::FieldDescriptor& field,
                                                  const FactoryRules& rules,
                                                  const tavelabi::Resource& resource,
                                                  std::string* key);

  // Fills the field from the resource when the rules let it and the resource has its key; the
  // result says whether it did.
  static bool fillFromResource(google::protobuf::Message& message,
                               const google::protobuf::FieldDescriptor& field,
                               const FactoryRules& rules, const tavelabi::Resource& resource);

  // message holds the overrides; every field that the resource has a key for is replaced by
  // the resource's value. Fields the rules keep to their override are left alone.
  static void takeFromResource(google::protobuf::Message& message, const FactoryRules& rules,
                               const tavelabi::Resource& resource);

  // For a factory that reads its message's keys directly instead of walking its descriptor (a
  // specialised build): the host value that feeds the field by the generic rule (its JSON name
  // as the key), or nullptr when the resource lacks the key or the rules keep the field to its
  // override. Only for rules that hasPlainKeys accepts.
  static const tavelabi::ResourceValue* plainValue(const google::protobuf::FieldDescriptor& field,
                                                   const FactoryRules& rules,
                                                   const tavelabi::Resource& resource);
  // Rules without key lists, readers or required keys: every field is found by its JSON name.
  static bool hasPlainKeys(const FactoryRules& rules);

  // The conversions of assign for one kind of field, with its checks and its
  // ResourceValueMismatch texts; field is the message's own field, key the host key.
  static const std::string& textOf(const google::protobuf::FieldDescriptor& field,
                                   const tavelabi::ResourceValue& value, const std::string& key);
  static double doubleOf(const google::protobuf::FieldDescriptor& field,
                         const tavelabi::ResourceValue& value, const std::string& key);
  static int32_t int32Of(const google::protobuf::FieldDescriptor& field,
                         const tavelabi::ResourceValue& value, const std::string& key);

  // One field by the rule: the resource's value when it has the key, else the override's field,
  // else the field is cleared.
  static void settleField(google::protobuf::Message& message,
                          const google::protobuf::Message& overrides,
                          const google::protobuf::FieldDescriptor& field, const FactoryRules& rules,
                          const tavelabi::Resource* resource);
};

}  // namespace halvor::protobuf
