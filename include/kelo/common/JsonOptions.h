#pragma once

#include <google/protobuf/message.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver.h>

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

  // The message printed with print(), map entries in key order at every level, so that equal
  // messages print as equal text. Throws std::runtime_error when protobuf's printer fails (a
  // message nested deeper than it follows) rather than give half a text. MessageJsonWriter
  // prints it where it can, protobufJson() elsewhere: the text is the same.
  static std::string toJson(const google::protobuf::Message& message);
  // The same text, always from protobuf's printer: the reference that the walk of
  // MessageJsonWriter and ResourceJsonWriter is held to.
  static std::string protobufJson(const google::protobuf::Message& message);
  // The message printed with printWithPrimitives(), likewise.
  static std::string toJsonWithPrimitives(const google::protobuf::Message& message);
  // Parses text into message with parse(). On failure the message stays as far as the parse got.
  static google::protobuf::util::Status fromJson(const std::string& text,
                                                 google::protobuf::Message& message);

 private:
  static std::string printed(const google::protobuf::Message& message,
                             const google::protobuf::util::JsonPrintOptions& options);
  // The type resolver of the compiled-in messages, made once and shared by all threads.
  static google::protobuf::util::TypeResolver* generatedTypes();
};

}  // namespace halvor::kelo
