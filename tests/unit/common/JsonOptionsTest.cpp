#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "NestedResources.h"
#include "halvor/protobuf/Resource.pb.h"
#include "halvor/protobuf/Settings.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceDepth.h"

namespace halvor::kelo {
namespace {

TEST(JsonOptionsTest, PrintOptionsAreAllOff) {
  const auto& options = JsonOptions::print();
  EXPECT_FALSE(options.add_whitespace);
  EXPECT_FALSE(options.always_print_primitive_fields);
  EXPECT_FALSE(options.always_print_enums_as_ints);
  EXPECT_FALSE(options.preserve_proto_field_names);
}

TEST(JsonOptionsTest, PrintWithPrimitivesDiffersOnlyThere) {
  const auto& options = JsonOptions::printWithPrimitives();
  EXPECT_FALSE(options.add_whitespace);
  EXPECT_TRUE(options.always_print_primitive_fields);
  EXPECT_FALSE(options.always_print_enums_as_ints);
  EXPECT_FALSE(options.preserve_proto_field_names);
}

TEST(JsonOptionsTest, ParseOptionsAreStrict) {
  EXPECT_FALSE(JsonOptions::parse().ignore_unknown_fields);
  EXPECT_FALSE(JsonOptions::parse().case_insensitive_enum_parsing);
}

TEST(JsonOptionsTest, OptionsAreBuiltOnce) {
  EXPECT_EQ(&JsonOptions::print(), &JsonOptions::print());
  EXPECT_EQ(&JsonOptions::printWithPrimitives(), &JsonOptions::printWithPrimitives());
  EXPECT_EQ(&JsonOptions::parse(), &JsonOptions::parse());
}

TEST(JsonOptionsTest, PrintsCompactCamelCaseWithEnumNames) {
  protobuf::Resource message;
  protobuf::ResourceValue& value = (*message.mutable_values())["value"];
  value.set_type(protobuf::ResourceValue::BOOL);
  value.mutable_boolvalue()->set_value(false);
  EXPECT_EQ(JsonOptions::toJson(message),
            R"({"values":{"value":{"boolValue":false,"type":"BOOL"}}})");
}

TEST(JsonOptionsTest, UnsetPathAndDefaultsAreLeftOut) {
  EXPECT_EQ(JsonOptions::toJson(protobuf::Resource()), "{}");
  protobuf::Resource message;
  message.mutable_path()->set_value("");
  EXPECT_EQ(JsonOptions::toJson(message), R"({"path":""})");
}

TEST(JsonOptionsTest, PrimitivesArePrintedWhenAsked) {
  const std::string json = JsonOptions::toJsonWithPrimitives(protobuf::ResourceValue());
  EXPECT_NE(json.find(R"("type":"UNSPECIFIED_RESOURCE_TYPE")"), std::string::npos) << json;
  EXPECT_EQ(json.find(' '), std::string::npos) << json;
}

TEST(JsonOptionsTest, UnknownFieldFailsTheParse) {
  protobuf::Resource message;
  EXPECT_FALSE(JsonOptions::fromJson(R"({"values":{},"bogus":1})", message).ok());
  protobuf::Validations validations;
  EXPECT_FALSE(JsonOptions::fromJson(R"({"min_length_typo":1})", validations).ok());
}

TEST(JsonOptionsTest, EnumNameInWrongCaseFailsTheParse) {
  protobuf::ResourceValue value;
  EXPECT_FALSE(JsonOptions::fromJson(R"({"type":"bool"})", value).ok());
  EXPECT_TRUE(JsonOptions::fromJson(R"({"type":"BOOL"})", value).ok());
  EXPECT_EQ(value.type(), protobuf::ResourceValue::BOOL);
}

TEST(JsonOptionsTest, NotJsonFailsTheParse) {
  protobuf::Resource message;
  EXPECT_FALSE(JsonOptions::fromJson("not json", message).ok());
}

TEST(JsonOptionsTest, ValidationsParseAndPrintBack) {
  protobuf::Validations validations;
  ASSERT_TRUE(
      JsonOptions::fromJson(R"({"minLength":2,"maxValue":1.5,"required":true})", validations).ok());
  EXPECT_EQ(validations.minlength().value(), 2);
  EXPECT_EQ(validations.maxvalue().value(), 1.5F);
  EXPECT_TRUE(validations.required().value());
  EXPECT_EQ(JsonOptions::toJson(validations), R"({"minLength":2,"maxValue":1.5,"required":true})");
}

// Three keys at the top and in a nested map, inserted in opposite orders.
const char* const kKeyedJson =
    R"({"values":{"a":{"intValue":97,"type":"INT32"},"b":{"intValue":98,"type":"INT32"},)"
    R"("c":{"intValue":99,"type":"INT32"},"nested":{"mapValue":{"a":{"intValue":97,)"
    R"("type":"INT32"},"b":{"intValue":98,"type":"INT32"},"c":{"intValue":99,)"
    R"("type":"INT32"}},"type":"MAP_VALUE"}}})";

TEST(JsonOptionsTest, MapKeysArePrintedInKeyOrderAtEveryLevel) {
  EXPECT_EQ(JsonOptions::toJson(test::NestedResources::keyed("abc")), kKeyedJson);
  EXPECT_EQ(JsonOptions::toJson(test::NestedResources::keyed("cba")), kKeyedJson);
  const std::string forward =
      JsonOptions::toJsonWithPrimitives(test::NestedResources::keyed("abcdefghijklmnopqrstuvwxyz"));
  EXPECT_EQ(forward, JsonOptions::toJsonWithPrimitives(
                         test::NestedResources::keyed("zyxwvutsrqponmlkjihgfedcba")));
}

TEST(JsonOptionsTest, WhatThePrinterCannotFinishThrowsInsteadOfHalfAText) {
  using Through = test::NestedResources::Through;
  const protobuf::Resource deepest =
      test::NestedResources::deep(ResourceDepth::kMaxDepth, Through::Lists);
  protobuf::Resource parsed;
  EXPECT_TRUE(JsonOptions::fromJson(JsonOptions::toJson(deepest), parsed).ok());
  const protobuf::Resource tooDeep =
      test::NestedResources::deep(ResourceDepth::kMaxDepth + 1, Through::Lists);
  EXPECT_THROW(JsonOptions::toJson(tooDeep), std::runtime_error);
  EXPECT_THROW(JsonOptions::toJsonWithPrimitives(tooDeep), std::runtime_error);
}

}  // namespace
}  // namespace halvor::kelo
