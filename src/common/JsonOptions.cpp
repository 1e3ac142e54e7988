#include "kelo/common/JsonOptions.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/util/type_resolver.h>
#include <google/protobuf/util/type_resolver_util.h>

#include <memory>
#include <stdexcept>

#include "kelo/common/MessageBytes.h"
#include "kelo/common/MessageJsonWriter.h"

namespace halvor::kelo {

namespace util = google::protobuf::util;

namespace {

const char* const kTypeUrlPrefix = "type.googleapis.com";

}  // namespace

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

// The walk prints the same text as protobuf's printer without serialising the message and
// resolving its types first; what it cannot print exactly goes to protobuf's printer.
std::string JsonOptions::toJson(const google::protobuf::Message& message) {
  std::string json;
  if (MessageJsonWriter::tryPrint(message, json)) {
    return json;
  }
  return protobufJson(message);
}

std::string JsonOptions::protobufJson(const google::protobuf::Message& message) {
  return printed(message, print());
}

std::string JsonOptions::toJsonWithPrimitives(const google::protobuf::Message& message) {
  return printed(message, printWithPrimitives());
}

// Protobuf's own MessageToJsonString prints the plain serialisation, whose maps come in hash
// order; the deterministic one gives every map in key order.
std::string JsonOptions::printed(const google::protobuf::Message& message,
                                 const util::JsonPrintOptions& options) {
  const google::protobuf::DescriptorPool* pool = message.GetDescriptor()->file()->pool();
  std::unique_ptr<util::TypeResolver> ownResolver;
  util::TypeResolver* resolver = generatedTypes();
  if (pool != google::protobuf::DescriptorPool::generated_pool()) {
    ownResolver.reset(util::NewTypeResolverForDescriptorPool(kTypeUrlPrefix, pool));
    resolver = ownResolver.get();
  }
  const std::string typeUrl =
      std::string(kTypeUrlPrefix) + "/" + message.GetDescriptor()->full_name();
  std::string json;
  const util::Status status =
      util::BinaryToJsonString(resolver, typeUrl, MessageBytes::of(message), &json, options);
  // The printer stops half-way through what it cannot print: never hand that on as JSON.
  if (!status.ok()) {
    throw std::runtime_error("Cannot print " + message.GetDescriptor()->full_name() +
                             " as JSON: " + std::string(status.message()));
  }
  return json;
}

util::TypeResolver* JsonOptions::generatedTypes() {
  static const std::unique_ptr<util::TypeResolver> resolver(util::NewTypeResolverForDescriptorPool(
      kTypeUrlPrefix, google::protobuf::DescriptorPool::generated_pool()));
  return resolver.get();
}

util::Status JsonOptions::fromJson(const std::string& text, google::protobuf::Message& message) {
  return util::JsonStringToMessage(text, &message, parse());
}

}  // namespace halvor::kelo
