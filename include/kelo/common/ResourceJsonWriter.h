#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "halvor/protobuf/Resource.pb.h"

namespace halvor::kelo {

// Prints a Resource message as JSON, character for character as protobuf's MessageToJsonString
// prints it with the shared print options, but by walking the message directly. Protobuf's
// printer serialises the message and resolves its types again on every call, which makes it the
// largest cost of a generic read. Whatever the walk does not reproduce exactly (text that needs
// an escape other than \" and \\, a float or double that is not finite, an enum number without a
// name) is left to protobuf's printer for the whole message. Map entries come in key order.
class ResourceJsonWriter {
 public:
  ResourceJsonWriter() = delete;

  // The JSON text of message. Throws std::length_error for values nested deeper than
  // ResourceDepth::kMaxDepth, which protobuf's printer could not finish either.
  static std::string print(const protobuf::Resource& message);
  // The walk alone: false, with out in an unspecified state, where protobuf's printer is needed.
  static bool tryPrint(const protobuf::Resource& message, std::string& out);

 private:
  using ValueMap = google::protobuf::Map<std::string, protobuf::ResourceValue>;

  static bool writeValue(const protobuf::ResourceValue& value, int depth, std::string& out);
  static bool writeMap(const ValueMap& map, int depth, std::string& out);
  static std::vector<const ValueMap::value_type*> sortedEntries(const ValueMap& map);
};

}  // namespace halvor::kelo
