#include "kelo/common/ResourceDepth.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace halvor::kelo {

int ResourceDepth::of(const protobuf::ResourceValue& value) { return boundedDepth(value, 1); }

int ResourceDepth::of(const protobuf::Resource& resource) {
  int deepest = 0;
  for (const auto& [key, value] : resource.values()) {
    deepest = std::max(deepest, of(value));
  }
  return deepest;
}

void ResourceDepth::check(const protobuf::ResourceValue& message) {
  if (of(message) > kMaxDepth) refuse();
}

void ResourceDepth::check(const protobuf::Resource& message) {
  if (of(message) > kMaxDepth) refuse();
}

int ResourceDepth::boundedDepth(const protobuf::ResourceValue& value, int level) {
  if (level > kMaxDepth) return level;
  int deepest = level;
  for (const protobuf::ResourceValue& element : value.listvalue()) {
    deepest = std::max(deepest, boundedDepth(element, level + 1));
    if (deepest > kMaxDepth) return deepest;
  }
  for (const auto& [key, element] : value.mapvalue()) {
    deepest = std::max(deepest, boundedDepth(element, level + 1));
    if (deepest > kMaxDepth) return deepest;
  }
  return deepest;
}

void ResourceDepth::refuse() {
  throw std::length_error("Resource values nest deeper than " + std::to_string(kMaxDepth) +
                          " levels: they cannot be printed as JSON");
}

}  // namespace halvor::kelo
