#include <google/protobuf/descriptor.h>
#include <google/protobuf/wrappers.pb.h>

#include <cstdint>
#include <string>
#include <utility>

#include "halvor/factories/FactoryCore.h"
#include "halvor/factories/MonitoringFactories.h"
#include "kelo/common/ResourceConverter.h"

namespace halvor::protobuf {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using HostValue = tavelabi::ResourceValue;

// The fields of a message by name, looked up once; they give the keys (their JSON names), the
// rules' names and the error texts.
const FieldDescriptor& fieldOf(const Descriptor& descriptor, const char* name) {
  return FactoryCore::fieldNamed(descriptor, name);
}

struct MeterFields {
  const Descriptor& type = *Meter::descriptor();
  const FieldDescriptor& guid = fieldOf(type, "guid");
  const FieldDescriptor& path = fieldOf(type, "path");
  const FieldDescriptor& value = fieldOf(type, "value");
  const FieldDescriptor& units = fieldOf(type, "units");
  const FieldDescriptor& min = fieldOf(type, "min");
  const FieldDescriptor& max = fieldOf(type, "max");
  const FieldDescriptor& label = fieldOf(type, "label");
  const FieldDescriptor& digitsToDisplay = fieldOf(type, "digitsToDisplay");
};

struct GroupFields {
  const Descriptor& type = *MeterGroup::descriptor();
  const FieldDescriptor& guid = fieldOf(type, "guid");
  const FieldDescriptor& path = fieldOf(type, "path");
  const FieldDescriptor& label = fieldOf(type, "label");
};

struct CollectionFields {
  const Descriptor& type = *MeterCollection::descriptor();
  const FieldDescriptor& path = fieldOf(type, "path");
  const FieldDescriptor& label = fieldOf(type, "label");
};

// One message's fields filled from the resource, each as the generic assign fills it: the
// wrapper is replaced by a fresh one holding the converted value.
class KeyReader {
 public:
  KeyReader(const FactoryRules& rules, const tavelabi::Resource& resource)
      : rules_(rules), resource_(resource) {}

  // mutableWrapper is called only when the key is there: it would make the field present.
  template <typename Message>
  void text(const FieldDescriptor& field, Message& message,
            google::protobuf::StringValue* (Message::*mutableWrapper)()) const {
    if (const HostValue* value = FactoryCore::plainValue(field, rules_, resource_)) {
      const std::string& text = FactoryCore::textOf(field, *value, field.json_name());
      google::protobuf::StringValue* wrapper = (message.*mutableWrapper)();
      wrapper->Clear();
      wrapper->set_value(text);
    }
  }

  void number(const FieldDescriptor& field, Meter& message,
              google::protobuf::DoubleValue* (Meter::*mutableWrapper)()) const {
    if (const HostValue* value = FactoryCore::plainValue(field, rules_, resource_)) {
      const double number = FactoryCore::doubleOf(field, *value, field.json_name());
      google::protobuf::DoubleValue* wrapper = (message.*mutableWrapper)();
      wrapper->Clear();
      wrapper->set_value(number);
    }
  }

  void integer(const FieldDescriptor& field, Meter& message,
               google::protobuf::Int32Value* (Meter::*mutableWrapper)()) const {
    if (const HostValue* value = FactoryCore::plainValue(field, rules_, resource_)) {
      const int32_t number = FactoryCore::int32Of(field, *value, field.json_name());
      google::protobuf::Int32Value* wrapper = (message.*mutableWrapper)();
      wrapper->Clear();
      wrapper->set_value(number);
    }
  }

  // A Resource field holds the one value under "value", as the host's own resources do.
  void single(const FieldDescriptor& field, Meter& message,
              Resource* (Meter::*mutableField)()) const {
    if (const HostValue* value = FactoryCore::plainValue(field, rules_, resource_)) {
      Resource made;
      (*made.mutable_values())["value"] = kelo::ResourceConverter::toHalvorPbResourceValue(*value);
      *(message.*mutableField)() = std::move(made);
    }
  }

 private:
  const FactoryRules& rules_;
  const tavelabi::Resource& resource_;
};

}  // namespace

// Field by field in the schema's order, so that the first value that does not fit is the one
// reported, as by the generic walk. "device" is a message the generic rule does not read: it
// keeps its override.
template <>
void HalvorPbFactory2<Meter>::takeFrom(Meter& message, const tavelabi::Resource& resource) const {
  if (!FactoryCore::hasPlainKeys(*rules_)) {
    FactoryCore::takeFromResource(message, *rules_, resource);
    return;
  }
  static const MeterFields fields;
  const KeyReader keys(*rules_, resource);
  keys.text(fields.guid, message, &Meter::mutable_guid);
  keys.text(fields.path, message, &Meter::mutable_path);
  keys.single(fields.value, message, &Meter::mutable_value);
  keys.text(fields.units, message, &Meter::mutable_units);
  keys.number(fields.min, message, &Meter::mutable_min);
  keys.number(fields.max, message, &Meter::mutable_max);
  keys.text(fields.label, message, &Meter::mutable_label);
  keys.integer(fields.digitsToDisplay, message, &Meter::mutable_digitstodisplay);
}

// "meters" is repeated: it keeps its override.
template <>
void HalvorPbFactory2<MeterGroup>::takeFrom(MeterGroup& message,
                                            const tavelabi::Resource& resource) const {
  if (!FactoryCore::hasPlainKeys(*rules_)) {
    FactoryCore::takeFromResource(message, *rules_, resource);
    return;
  }
  static const GroupFields fields;
  const KeyReader keys(*rules_, resource);
  keys.text(fields.guid, message, &MeterGroup::mutable_guid);
  keys.text(fields.path, message, &MeterGroup::mutable_path);
  keys.text(fields.label, message, &MeterGroup::mutable_label);
}

// "groups" is repeated: it keeps its override.
template <>
void HalvorPbFactory2<MeterCollection>::takeFrom(MeterCollection& message,
                                                 const tavelabi::Resource& resource) const {
  if (!FactoryCore::hasPlainKeys(*rules_)) {
    FactoryCore::takeFromResource(message, *rules_, resource);
    return;
  }
  static const CollectionFields fields;
  const KeyReader keys(*rules_, resource);
  keys.text(fields.path, message, &MeterCollection::mutable_path);
  keys.text(fields.label, message, &MeterCollection::mutable_label);
}

}  // namespace halvor::protobuf
