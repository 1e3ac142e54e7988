#pragma once

#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>

namespace halvor::kelo {

// Whether a generated message carries fields its schema does not know. The JSON writers leave
// such messages to protobuf's printer, which fails on some of them.
class UnknownFields {
 public:
  UnknownFields() = delete;

  // The reflection of each (final) message class is looked up once: the lookup costs more than
  // the check.
  template <class Generated>
  static bool any(const Generated& message) {
    static const google::protobuf::Reflection* const reflection = Generated::GetReflection();
    return !reflection->GetUnknownFields(message).empty();
  }
};

}  // namespace halvor::kelo
