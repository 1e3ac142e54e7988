#include "halvor/factories/FactoryRules.h"

#include <string>
#include <unordered_map>

namespace halvor::protobuf {

const FactoryRules& factoryRulesOf(const google::protobuf::Descriptor& descriptor) {
  // One entry per message whose factory differs from the generic rule, by its full name, e.g.
  //   {"halvor.protobuf.Alarm", FactoryRules().readFrom("active", {"value", "active"})},
  // Messages that follow the generic rule need no entry.
  static const std::unordered_map<std::string, FactoryRules> kRules = {
      // An alarm is active by "value", and by "active" only without it; a "name" key overrides
      // the "label".
      {"halvor.protobuf.Alarm",
       FactoryRules().readFrom("active", {"value", "active"}).readFrom("name", {"name", "label"})},
      // The record's time comes from two keys ("seconds", "hundredths"), so the handler makes
      // it; "eventType" and "severity" are names of their enumerations, as the generic rule reads.
      {"halvor.protobuf.LoggedEvent", FactoryRules().keepOverride("time")},
      // A preset of the audio processor has every key; one missing is "map::at".
      {"halvor.protobuf.OrbanPresetName", FactoryRules().requireKeys()},
      // Every key of an analog output is mandatory; the host names the wanted value "set_value".
      {"halvor.protobuf.AnalogOutput",
       FactoryRules().readFrom("setValue", {"set_value"}).requireKeys()},
  };
  static const FactoryRules kGeneric;
  const auto found = kRules.find(descriptor.full_name());
  return found == kRules.end() ? kGeneric : found->second;
}

}  // namespace halvor::protobuf
