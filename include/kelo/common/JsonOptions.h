#pragma once

#include <google/protobuf/message.h>
#include <google/protobuf/util/json_util.h>

#include <string>

namespace halvor::kelo {

// The one set of JSON options that every handler prints and parses with. Each set is built once,
// on first use, and shared by all threads.
class JsonOptions {
 public:
  JsonOptions() = delete;

  // Compact, lowerCamelCase names, enums by name, members at their default left out.
  static const google::protobuf::util::JsonPrintOptions& print();
  // As print(), but members at their default are printed too. Only the active alarms, one alarm
  // and the meter collection links are printed so.
  static const google::protobuf::util::JsonPrintOptions& printWithPrimitives();
  // Strict: an unknown field or an enum name in the wrong case fails the parse.
  static const google::protobuf::util::JsonParseOptions& parse();

  // The message printed with print(). The printer's status is not looked at: a message that
  // prints badly gives what was printed.
  static std::string toJson(const google::protobuf::Message& message);
  // The message printed with printWithPrimitives().
  static std::string toJsonWithPrimitives(const google::protobuf::Message& message);
  // Parses text into message with parse(). On failure the message stays as far as the parse got.
  static google::protobuf::util::Status fromJson(const std::string& text,
                                                 google::protobuf::Message& message);
};

}  // namespace halvor::kelo
