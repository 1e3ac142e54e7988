#pragma once

#include <cstdint>
#include <vector>

#include "tavelabi/ResourceValue.h"

namespace halvor::kelo::test {

// Host values of the types ResourceValue has no constructor for.
struct HostValues {
  static tavelabi::ResourceValue floatValue(float number) {
    tavelabi::ResourceValue value;
    value.setType(tavelabi::ResourceValueType::FLOAT);
    value.setFloatValue(number);
    return value;
  }

  static tavelabi::ResourceValue bytesValue(const std::vector<uint8_t>& bytes) {
    tavelabi::ResourceValue value;
    value.setType(tavelabi::ResourceValueType::UINT8_ARRAY);
    value.setByteArray(bytes);
    return value;
  }
};

}  // namespace halvor::kelo::test
