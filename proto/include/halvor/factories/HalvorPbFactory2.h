#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "halvor/factories/FactoryCore.h"
#include "halvor/factories/FactoryRules.h"
#include "halvor/protobuf/Resource.pb.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::protobuf {

// Builds a message from a host Resource and a set of overrides. The overrides are a message of
// the same type: every field that is set there (a wrapper or message present, a repeated field
// or map non-empty, a plain scalar or enum not at zero) is an override.
//
// build(resource) fills each field by the rule: the resource's value when the resource has the
// field's key, otherwise the override, otherwise the field stays absent. build(nullptr) uses the
// overrides alone. How host values convert, and the rules of single messages, are told in
// docs/MESSAGES.md.
template <typename Message>
class HalvorPbFactory2 {
 public:
  HalvorPbFactory2() : rules_(&factoryRulesOf(*Message::descriptor())) {}
  // A factory with rules of its own; they must outlive the factory.
  explicit HalvorPbFactory2(const FactoryRules& rules) : rules_(&rules) {}
  HalvorPbFactory2(const HalvorPbFactory2&) = default;
  HalvorPbFactory2& operator=(const HalvorPbFactory2&) = default;
  virtual ~HalvorPbFactory2() = default;

  Message& overrides() { return overrides_; }
  const Message& overrides() const { return overrides_; }

  // Sets the override of a field (schema name) from a host value, by the same conversion that
  // build uses. Throws ResourceValueMismatch when the value does not fit the field.
  void setOverride(const std::string& fieldName, const tavelabi::ResourceValue& value) {
    FactoryCore::assign(overrides_, FactoryCore::fieldNamed(*Message::descriptor(), fieldName),
                        value, fieldName);
  }

  virtual std::shared_ptr<Message> build(tavelabi::Resource* resource) {
    auto message = std::make_shared<Message>(overrides_);
    if (resource != nullptr) takeFrom(*message, *resource);
    return message;
  }

  // build() for a factory that builds once: the overrides move into the message instead of
  // being copied, and are empty afterwards. A tree of messages built from the inside out (the
  // meters of a group, the groups of a collection) is then not copied again at every level.
  std::shared_ptr<Message> release(tavelabi::Resource* resource) {
    if constexpr (std::is_same_v<Message, Resource>) {
      return build(resource);
    } else {
      auto message = std::make_shared<Message>(std::move(overrides_));
      overrides_.Clear();
      if (resource != nullptr) takeFrom(*message, *resource);
      return message;
    }
  }

 protected:
  const FactoryRules& rules() const { return *rules_; }

 private:
  // message holds the overrides; each field the resource has a key for takes the resource's
  // value, by the rules. The generic walk goes over the descriptor field by field; a message
  // built often may specialise this to read its keys directly, with the same result
  // (MonitoringFactories.h, the meters).
  void takeFrom(Message& message, const tavelabi::Resource& resource) const {
    FactoryCore::takeFromResource(message, *rules_, resource);
  }

  const FactoryRules* rules_;
  Message overrides_;
};

// Resource: "path" by the rule, then the override's values copied in entry by entry. The values
// of a host resource never go into the message this way.
template <>
std::shared_ptr<Resource> HalvorPbFactory2<Resource>::build(tavelabi::Resource* resource);

using HalvorPbFactory2Resource = HalvorPbFactory2<Resource>;
using HalvorPbFactory2ResourceValue = HalvorPbFactory2<ResourceValue>;

}  // namespace halvor::protobuf
