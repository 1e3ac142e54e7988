#include "halvor/factories/FactoryRules.h"

#include <string>
#include <unordered_map>

namespace halvor::protobuf {

const FactoryRules& factoryRulesOf(const google::protobuf::Descriptor& descriptor) {
  // One entry per message whose factory differs from the generic rule, by its full name, e.g.
  //   {"halvor.protobuf.Alarm", FactoryRules().readFrom("active", {"value", "active"})},
  // Messages that follow the generic rule need no entry.
  static const std::unordered_map<std::string, FactoryRules> kRules = {};
  static const FactoryRules kGeneric;
  const auto found = kRules.find(descriptor.full_name());
  return found == kRules.end() ? kGeneric : found->second;
}

}  // namespace halvor::protobuf
