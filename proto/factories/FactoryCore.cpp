#include "halvor/factories/FactoryCore.h"

#include <google/protobuf/timestamp.pb.h>
#include <google/protobuf/util/time_util.h>
#include <google/protobuf/wrappers.pb.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/ResourceConverter.h"
#include "tavelabi/Types.h"

namespace halvor::protobuf {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using tavelabi::ResourceValueType;
using HostValue = tavelabi::ResourceValue;

// What is being filled, for the error text: the message's own field (not a wrapper's inner
// "value") and the resource key that feeds it.
struct Target {
  const FieldDescriptor& field;
  const std::string& key;
};

// The descriptors that every field is compared with, looked up once: each lookup of a
// generated descriptor passes protobuf's once-only initialisation check.
struct KnownTypes {
  const FileDescriptor* wrappers = google::protobuf::StringValue::descriptor()->file();
  const Descriptor* timestamp = google::protobuf::Timestamp::descriptor();
  const Descriptor* resourceValue = ResourceValue::descriptor();
  const Descriptor* resource = Resource::descriptor();
};

const KnownTypes& known() {
  static const KnownTypes types;
  return types;
}

// Every message of protobuf's wrappers file is a wrapper; the file is compared, not the names.
bool isWrapper(const Descriptor& type) { return type.file() == known().wrappers; }

bool isTimestamp(const Descriptor& type) { return &type == known().timestamp; }

[[noreturn]] void mismatch(const Target& target, const HostValue& value,
                           const std::string& accepted) {
  throw ResourceValueMismatch("HalvorPbFactory2<" + target.field.containing_type()->full_name() +
                              ">: the key \"" + target.key + "\" holds " +
                              tavelabi::toString(value.getType()) + ", but the field " +
                              target.field.name() + " takes " + accepted);
}

void expectType(const Target& target, const HostValue& value, ResourceValueType wanted) {
  if (value.getType() != wanted) mismatch(target, value, tavelabi::toString(wanted));
}

// A FLOAT, DOUBLE or INT32 as a double; nothing else.
double numberOf(const Target& target, const HostValue& value) {
  switch (value.getType()) {
    case ResourceValueType::FLOAT:
      return value.getFloatValue();
    case ResourceValueType::DOUBLE:
      return value.getDoubleValue();
    case ResourceValueType::INT32:
      return value.getIntValue();
    default:
      mismatch(target, value, "FLOAT, DOUBLE or INT32");
  }
}

float floatOf(const Target& target, const HostValue& value) {
  const double number = numberOf(target, value);
  // Narrowing a finite double beyond the range of float is undefined behaviour: refuse it.
  if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<float>::max()) {
    mismatch(target, value, "a number within the range of a float");
  }
  return static_cast<float>(number);
}

// An INT32 that is not negative, for the unsigned fields.
uint32_t unsignedOf(const Target& target, const HostValue& value) {
  expectType(target, value, ResourceValueType::INT32);
  if (value.getIntValue() < 0) mismatch(target, value, "an INT32 that is not negative");
  return static_cast<uint32_t>(value.getIntValue());
}

std::string bytesOf(const HostValue& value) {
  const uint32_t size = value.getByteArraySize();
  if (size == 0) return std::string();
  return std::string(reinterpret_cast<const char*>(value.getByteArray()), size);
}

// STRING gives the value of that name (0 for a name the enumeration lacks); INT32 the number.
void assignEnum(const Target& target, Message& message, const FieldDescriptor& field,
                const HostValue& value) {
  const Reflection& reflection = *message.GetReflection();
  if (value.getType() == ResourceValueType::STRING) {
    const auto* named = field.enum_type()->FindValueByName(value.getStringValue());
    reflection.SetEnumValue(&message, &field, named == nullptr ? 0 : named->number());
    return;
  }
  if (value.getType() == ResourceValueType::INT32) {
    const int number = value.getIntValue();
    const bool closed = field.enum_type()->file()->syntax() == FileDescriptor::SYNTAX_PROTO2;
    if (closed && field.enum_type()->FindValueByNumber(number) == nullptr) {
      mismatch(target, value, "a number of " + field.enum_type()->full_name());
    }
    reflection.SetEnumValue(&message, &field, number);
    return;
  }
  mismatch(target, value, "STRING (a name) or INT32 (a number)");
}

// A singular scalar field of message: a plain field of the message or the "value" of a wrapper.
void assignScalar(const Target& target, Message& message, const FieldDescriptor& field,
                  const HostValue& value) {
  const Reflection& reflection = *message.GetReflection();
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_BOOL:
      expectType(target, value, ResourceValueType::BOOL);
      reflection.SetBool(&message, &field, value.getBoolValue());
      return;
    case FieldDescriptor::CPPTYPE_INT32:
      expectType(target, value, ResourceValueType::INT32);
      reflection.SetInt32(&message, &field, value.getIntValue());
      return;
    case FieldDescriptor::CPPTYPE_INT64:
      expectType(target, value, ResourceValueType::INT32);
      reflection.SetInt64(&message, &field, value.getIntValue());
      return;
    case FieldDescriptor::CPPTYPE_UINT32:
      reflection.SetUInt32(&message, &field, unsignedOf(target, value));
      return;
    case FieldDescriptor::CPPTYPE_UINT64:
      reflection.SetUInt64(&message, &field, unsignedOf(target, value));
      return;
    case FieldDescriptor::CPPTYPE_FLOAT:
      reflection.SetFloat(&message, &field, floatOf(target, value));
      return;
    case FieldDescriptor::CPPTYPE_DOUBLE:
      reflection.SetDouble(&message, &field, numberOf(target, value));
      return;
    case FieldDescriptor::CPPTYPE_STRING:
      if (field.type() == FieldDescriptor::TYPE_BYTES) {
        expectType(target, value, ResourceValueType::UINT8_ARRAY);
        reflection.SetString(&message, &field, bytesOf(value));
      } else {
        expectType(target, value, ResourceValueType::STRING);
        reflection.SetString(&message, &field, value.getStringValue());
      }
      return;
    case FieldDescriptor::CPPTYPE_ENUM:
      assignEnum(target, message, field, value);
      return;
    case FieldDescriptor::CPPTYPE_MESSAGE:
      break;
  }
  throw std::logic_error("HalvorPbFactory2: " + field.full_name() + " is not a scalar field");
}

google::protobuf::Timestamp timestampOf(const Target& target, const HostValue& value) {
  expectType(target, value, ResourceValueType::STRING);
  google::protobuf::Timestamp parsed;
  if (!google::protobuf::util::TimeUtil::FromString(value.getStringValue(), &parsed)) {
    mismatch(target, value,
             "a STRING of RFC 3339 form, which \"" + value.getStringValue() + "\" is not");
  }
  return parsed;
}

// The message that a message-typed field gets from value, made apart from the field, so that a
// value that does not fit leaves the field as it was.
std::unique_ptr<Message> fieldMessageOf(const Target& target, const Message& prototype,
                                        const HostValue& value) {
  const Descriptor& type = *prototype.GetDescriptor();
  std::unique_ptr<Message> made(prototype.New());
  if (isWrapper(type)) {
    assignScalar(target, *made, *type.FindFieldByNumber(1), value);
  } else if (isTimestamp(type)) {
    made->CopyFrom(timestampOf(target, value));
  } else if (&type == known().resourceValue) {
    made->CopyFrom(kelo::ResourceConverter::toHalvorPbResourceValue(value));
  } else {
    // A Resource of one value holds it under "value", as the host's own resources do.
    Resource single;
    (*single.mutable_values())["value"] = kelo::ResourceConverter::toHalvorPbResourceValue(value);
    made->CopyFrom(single);
  }
  return made;
}

// The field's only key, its JSON name.
const HostValue* findKey(const std::string& candidate, const tavelabi::Resource& resource,
                         const FactoryRules& rules, std::string* key) {
  const auto found = resource.values.find(candidate);
  if (found != resource.values.end()) {
    *key = candidate;
    return &found->second;
  }
  if (rules.keysRequired) throw std::out_of_range("map::at");
  return nullptr;
}

}  // namespace

bool FactoryCore::isReadable(const FieldDescriptor& field) {
  if (field.is_repeated()) return false;
  if (field.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) return true;
  const Descriptor& type = *field.message_type();
  return isWrapper(type) || isTimestamp(type) || &type == known().resourceValue ||
         &type == known().resource;
}

void FactoryCore::assign(Message& message, const FieldDescriptor& field, const HostValue& value,
                         const std::string& key) {
  if (!isReadable(field)) {
    throw std::logic_error("HalvorPbFactory2: " + field.full_name() +
                           " can't be filled from a host value without a reader of its own");
  }
  const Target target{field, key};
  if (field.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
    assignScalar(target, message, field, value);
    return;
  }
  const Reflection& reflection = *message.GetReflection();
  std::unique_ptr<Message> made =
      fieldMessageOf(target, reflection.GetMessage(message, &field), value);
  // The field takes the message that was made, instead of a copy of it.
  reflection.SetAllocatedMessage(&message, made.release(), &field);
}

const FieldDescriptor& FactoryCore::fieldNamed(const Descriptor& descriptor,
                                               const std::string& name) {
  const FieldDescriptor* field = descriptor.FindFieldByName(name);
  if (field == nullptr) {
    throw std::invalid_argument("HalvorPbFactory2<" + descriptor.full_name() +
                                ">: the message has no field " + name);
  }
  return *field;
}

const HostValue* FactoryCore::findValue(const FieldDescriptor& field, const FactoryRules& rules,
                                        const tavelabi::Resource& resource, std::string* key) {
  const auto aliases = rules.keys.find(field.name());
  if (aliases == rules.keys.end()) {
    return findKey(field.json_name(), resource, rules, key);
  }
  for (const std::string& candidate : aliases->second) {
    const auto found = resource.values.find(candidate);
    if (found != resource.values.end()) {
      *key = candidate;
      return &found->second;
    }
  }
  if (rules.keysRequired) throw std::out_of_range("map::at");
  return nullptr;
}

bool FactoryCore::fillFromResource(Message& message, const FieldDescriptor& field,
                                   const FactoryRules& rules, const tavelabi::Resource& resource) {
  if (rules.overrideOnly.count(field.name()) != 0) return false;
  const auto reader = rules.readers.find(field.name());
  if (reader == rules.readers.end() && !isReadable(field)) return false;
  std::string key;
  const HostValue* value = findValue(field, rules, resource, &key);
  if (value == nullptr) return false;
  if (reader != rules.readers.end()) {
    message.GetReflection()->ClearField(&message, &field);
    reader->second(message, field, *value);
  } else {
    assign(message, field, *value, key);
  }
  return true;
}

const HostValue* FactoryCore::plainValue(const FieldDescriptor& field, const FactoryRules& rules,
                                         const tavelabi::Resource& resource) {
  if (!rules.overrideOnly.empty() && rules.overrideOnly.count(field.name()) != 0) return nullptr;
  const auto found = resource.values.find(field.json_name());
  return found == resource.values.end() ? nullptr : &found->second;
}

bool FactoryCore::hasPlainKeys(const FactoryRules& rules) {
  return rules.keys.empty() && rules.readers.empty() && !rules.keysRequired;
}

const std::string& FactoryCore::textOf(const FieldDescriptor& field, const HostValue& value,
                                       const std::string& key) {
  expectType(Target{field, key}, value, ResourceValueType::STRING);
  return value.getStringValue();
}

double FactoryCore::doubleOf(const FieldDescriptor& field, const HostValue& value,
                             const std::string& key) {
  return numberOf(Target{field, key}, value);
}

int32_t FactoryCore::int32Of(const FieldDescriptor& field, const HostValue& value,
                             const std::string& key) {
  expectType(Target{field, key}, value, ResourceValueType::INT32);
  return value.getIntValue();
}

void FactoryCore::settleField(Message& message, const Message& overrides,
                              const FieldDescriptor& field, const FactoryRules& rules,
                              const tavelabi::Resource* resource) {
  if (resource != nullptr && fillFromResource(message, field, rules, *resource)) return;
  // The override's field, or nothing: the one field is swapped out of a copy of the overrides.
  const Reflection& reflection = *message.GetReflection();
  reflection.ClearField(&message, &field);
  std::unique_ptr<Message> copy(overrides.New());
  copy->CopyFrom(overrides);
  reflection.SwapFields(&message, copy.get(), {&field});
}

void FactoryCore::takeFromResource(Message& message, const FactoryRules& rules,
                                   const tavelabi::Resource& resource) {
  const Descriptor& descriptor = *message.GetDescriptor();
  for (int index = 0; index < descriptor.field_count(); ++index) {
    fillFromResource(message, *descriptor.field(index), rules, resource);
  }
}

}  // namespace halvor::protobuf
