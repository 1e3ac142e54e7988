#pragma once

#include <string>
#include <string_view>

#include "halvor/protobuf/Resource.pb.h"

namespace halvor::kelo {

// Prints a Resource message as JSON, character for character as protobuf's MessageToJsonString
// prints it with the shared print options, but by walking the message directly. Protobuf's
// printer serialises the message and resolves its types again on every call, which makes it the
// largest cost of a generic read. Whatever the walk does not reproduce exactly (text that needs
// an escape other than \" and \\, a float or double that is not finite, an enum number without a
// name, nesting deeper than kMaxDepth) is left to protobuf's printer for the whole message.
class ResourceJsonWriter {
 public:
  ResourceJsonWriter() = delete;

  static constexpr int kMaxDepth = 32;

  // The JSON text of message.
  static std::string print(const protobuf::Resource& message);
  // The walk alone: false, with out in an unspecified state, where protobuf's printer is needed.
  static bool tryPrint(const protobuf::Resource& message, std::string& out);

 private:
  static bool writeValue(const protobuf::ResourceValue& value, int depth, std::string& out);
  static bool writeMap(const google::protobuf::Map<std::string, protobuf::ResourceValue>& map,
                       int depth, std::string& out);
  static bool writeString(std::string_view text, std::string& out);
};

}  // namespace halvor::kelo
