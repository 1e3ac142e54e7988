#include <memory>

#include "halvor/factories/FactoryCore.h"
#include "halvor/factories/HalvorPbFactory2.h"

namespace halvor::protobuf {

template <>
std::shared_ptr<Resource> HalvorPbFactory2<Resource>::build(tavelabi::Resource* resource) {
  auto message = std::make_shared<Resource>();
  FactoryCore::settleField(*message, overrides_,
                           FactoryCore::fieldNamed(*Resource::descriptor(), "path"), *rules_,
                           resource);
  auto& values = *message->mutable_values();
  for (const auto& [key, value] : overrides_.values()) values[key] = value;
  return message;
}

}  // namespace halvor::protobuf
