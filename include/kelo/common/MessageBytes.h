#pragma once

#include <google/protobuf/message_lite.h>

#include <string>

namespace halvor::kelo {

// The binary wire form of a message, serialised deterministically: map entries in key order, so
// that equal messages are equal bytes (protobuf's plain serialisation writes a map in its hash
// order, which differs from one map object to the next). Any parser reads it as the plain form.
class MessageBytes {
 public:
  MessageBytes() = delete;

  static std::string of(const google::protobuf::MessageLite& message);
};

}  // namespace halvor::kelo
