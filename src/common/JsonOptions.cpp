#include "kelo/common/JsonOptions.h"

namespace halvor::kelo {

namespace util = google::protobuf::util;

const util::JsonPrintOptions& JsonOptions::print() {
  static const util::JsonPrintOptions options = [] {
    util::JsonPrintOptions made;
    made.add_whitespace = false;
    made.always_print_primitive_fields = false;
    made.always_print_enums_as_ints = false;
    made.preserve_proto_field_names = false;
    return made;
  }();
  return options;
}

const util::JsonPrintOptions& JsonOptions::printWithPrimitives() {
  static const util::JsonPrintOptions options = [] {
    util::JsonPrintOptions made = print();
    made.always_print_primitive_fields = true;
    return made;
  }();
  return options;
}

const util::JsonParseOptions& JsonOptions::parse() {
  static const util::JsonParseOptions options = [] {
    util::JsonParseOptions made;
    made.ignore_unknown_fields = false;
    made.case_insensitive_enum_parsing = false;
    return made;
  }();
  return options;
}

std::string JsonOptions::toJson(const google::protobuf::Message& message) {
  std::string json;
  (void)util::MessageToJsonString(message, &json, print());
  return json;
}

std::string JsonOptions::toJsonWithPrimitives(const google::protobuf::Message& message) {
  std::string json;
  (void)util::MessageToJsonString(message, &json, printWithPrimitives());
  return json;
}

util::Status JsonOptions::fromJson(const std::string& text, google::protobuf::Message& message) {
  return util::JsonStringToMessage(text, &message, parse());
}

}  // namespace halvor::kelo
