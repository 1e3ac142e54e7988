#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <string>

#include "halvor/protobuf/Graphics.pb.h"

namespace halvor::kelo {

// Prints any message as JSON, character for character as JsonOptions::print() prints it with
// protobuf's printer, but by walking the message with reflection. Protobuf's printer serialises
// the message and resolves every type in it again on each call, which makes a list of a hundred
// meters cost far more to print than to read. The walk prints members in field number order,
// members at their default left out, wrapper types as bare values, 64-bit integers quoted, enums
// by name and map entries in key order (protobuf prints a deterministic serialisation). What it
// does not reproduce exactly is left to protobuf's printer for the whole message: the other
// well-known types (Timestamp, Any, ...), maps whose keys are not texts or whose values are not
// messages, texts that need an escape other than \" and \\, non-finite numbers, enum numbers
// without a name, unknown fields, and nesting deeper than kMaxNesting.
class MessageJsonWriter {
 public:
  MessageJsonWriter() = delete;

  // Nested messages (wrappers and map entries included) that the walk follows. Protobuf's
  // printer follows 64, so whatever the walk prints, protobuf's printer could have printed.
  static constexpr int kMaxNesting = 32;

  // Appends the JSON text of message to out; false, with out in an unspecified state, where
  // protobuf's printer is needed.
  static bool tryPrint(const google::protobuf::Message& message, std::string& out);

 private:
  using Field = google::protobuf::FieldDescriptor;

  static bool writeMessage(const google::protobuf::Message& message, int depth, std::string& out);
  static bool writeWrapper(const google::protobuf::Message& wrapper, std::string& out);
  static bool writeMember(const google::protobuf::Message& message, const Field& field, int depth,
                          std::string& out);
  static bool writeMap(const google::protobuf::Message& message, const Field& field, int depth,
                       std::string& out);
  // One value of the field: the singular one when index is negative, else element index.
  static bool writeValue(const google::protobuf::Message& message, const Field& field, int index,
                         int depth, std::string& out);
  static bool writeNested(const google::protobuf::Message& message, int depth, std::string& out);
  // Resource and the meter tree have printers of their own; written tells whether one of them
  // took the message (and the result is its result).
  static bool writeWithOwnPrinter(const google::protobuf::Message& message, int depth,
                                  std::string& out, bool& written);
  // Whether the member is a list of generated Point messages.
  static bool isPointList(const google::protobuf::Message& message, const Field& field);
  static bool isWrapper(const google::protobuf::Descriptor& descriptor);
  static bool isOtherWellKnownType(const google::protobuf::Descriptor& descriptor);
};

}  // namespace halvor::kelo
