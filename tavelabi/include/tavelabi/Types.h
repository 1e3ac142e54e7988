#pragma once

#include <chrono>
#include <cstdint>

namespace halvor::tavelabi {

// The host hands the plug-in the steady clock's nanosecond time point.
using TimePoint = std::chrono::time_point<std::chrono::steady_clock, std::chrono::nanoseconds>;

// The verb of an action.
enum class CCRUD : int {
  Command = 0,
  Create = 1,
  Read = 2,
  Update = 3,
  Delete = 4,
  None = 5,
};

// What a ResourceValue holds.
enum class ResourceValueType : int {
  UNSPECIFIED_RESOURCE_TYPE = 0,
  BOOL = 1,
  FLOAT = 2,
  DOUBLE = 3,
  INT32 = 4,
  UINT8_ARRAY = 5,
  LIST_VALUE = 6,
  MAP_VALUE = 7,
  STRING = 8,
};

// Names for log lines and error texts ("Read", "INT32", ...); "?" for a value outside the enum.
const char* toString(CCRUD action);
const char* toString(ResourceValueType type);

}  // namespace halvor::tavelabi
