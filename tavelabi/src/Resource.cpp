#include "tavelabi/Resource.h"

namespace halvor::tavelabi {

Resource::Resource() = default;

Resource::Resource(const ResourceValue& value) { values.emplace("value", value); }

Resource::Resource(const std::string& key, const ResourceValue& value) {
  values.emplace(key, value);
}

Resource::~Resource() = default;

void Resource::addValue(const std::string& key, const ResourceValue& value) {
  values.insert_or_assign(key, value);
}

void Resource::updateValue(const std::string& key, const ResourceValue& value) {
  values.insert_or_assign(key, value);
}

void Resource::removeValue(const std::string& key) { values.erase(key); }

}  // namespace halvor::tavelabi
