#pragma once

#include "halvor/protobuf/Resource.pb.h"

namespace halvor::kelo {

// How deeply Resource values may nest. Protobuf's JSON printer follows at most 64 nested
// messages below the one it prints and stops half-way past that, and the innermost value's
// wrapper is one of them: 63 levels of values always print, one more may not. Its parser accepts
// lists about 98 levels deep, so the limit is enforced where a client's resource enters, before
// anything of it is stored, and again where one is printed.
class ResourceDepth {
 public:
  ResourceDepth() = delete;

  static constexpr int kMaxDepth = 63;

  // A value without nested values is 1 deep; a resource is as deep as its deepest value.
  // Counting stops one past kMaxDepth, so that no nesting costs more than that to measure.
  static int of(const protobuf::ResourceValue& value);
  static int of(const protobuf::Resource& resource);
  // Throws std::length_error, naming the limit, when message nests deeper than kMaxDepth.
  static void check(const protobuf::ResourceValue& message);
  static void check(const protobuf::Resource& message);

 private:
  static int boundedDepth(const protobuf::ResourceValue& value, int level);
  [[noreturn]] static void refuse();
};

}  // namespace halvor::kelo
