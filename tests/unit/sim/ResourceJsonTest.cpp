#include <gtest/gtest.h>
#include <json/reader.h>

#include <memory>

#include "sim/ResourceJson.h"

namespace halvor::sim {
namespace {

using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

Json::Value parse(const std::string& text) {
  Json::CharReaderBuilder builder;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  std::string errors;
  EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors;
  return value;
}

ResourceValue value(const std::string& text) {
  return ResourceJson::valueFromJson(parse(text), "test");
}

TEST(ResourceJsonTest, EveryScalarType) {
  EXPECT_EQ(3, value(R"({"int": 3})").getIntValue());
  EXPECT_EQ(-2147483648, value(R"({"int": -2147483648})").getIntValue());
  EXPECT_EQ("x", value(R"({"string": "x"})").getStringValue());
  ResourceValue f = value(R"({"float": 1.5})");
  EXPECT_EQ(ResourceValueType::FLOAT, f.getType());
  EXPECT_FLOAT_EQ(1.5f, f.getFloatValue());
  ResourceValue d = value(R"({"double": 2.25})");
  EXPECT_EQ(ResourceValueType::DOUBLE, d.getType());
  EXPECT_DOUBLE_EQ(2.25, d.getDoubleValue());
  EXPECT_TRUE(value(R"({"bool": true})").getBoolValue());
  EXPECT_EQ(ResourceValueType::UNSPECIFIED_RESOURCE_TYPE,
            value(R"({"unspecified": null})").getType());
  ResourceValue bytes = value(R"({"bytes": [1, 2, 255]})");
  ASSERT_EQ(ResourceValueType::UINT8_ARRAY, bytes.getType());
  ASSERT_EQ(3u, bytes.getByteArraySize());
  EXPECT_EQ(255, bytes.getByteArray()[2]);
}

TEST(ResourceJsonTest, NestedListsAndMaps) {
  ResourceValue nested = value(
      R"({"map": {"list": {"list": [{"int": 1}, {"map": {"deep": {"list": [{"string": "s"}]}}}]},
                  "empty": {"map": {}}}})");
  ASSERT_EQ(ResourceValueType::MAP_VALUE, nested.getType());
  const auto& list = nested.getMapValue().at("list").getListValue();
  ASSERT_EQ(2u, list.size());
  EXPECT_EQ(1, list[0].getIntValue());
  EXPECT_EQ("s", list[1].getMapValue().at("deep").getListValue().at(0).getStringValue());
  EXPECT_TRUE(nested.getMapValue().at("empty").getMapValue().empty());
}

TEST(ResourceJsonTest, RoundTripKeepsEveryType) {
  const std::string text =
      R"({"a": {"int": 7}, "b": {"float": 0.5}, "c": {"double": 1e300}, "d": {"bool": false},
          "e": {"bytes": [0, 9]}, "f": {"list": [{"string": "x"}, {"list": []}]},
          "g": {"map": {"k": {"unspecified": null}}}, "h": {"string": ""}})";
  tavelabi::Resource resource = ResourceJson::resourceFromJson(parse(text), "test");
  Json::Value back = ResourceJson::resourceToJson(resource);
  tavelabi::Resource again = ResourceJson::resourceFromJson(back, "again");
  ASSERT_EQ(resource.values.size(), again.values.size());
  for (const auto& [key, original] : resource.values) {
    EXPECT_TRUE(original == again.values.at(key)) << key;
  }
  EXPECT_EQ(parse(text), back);
}

TEST(ResourceJsonTest, ErrorsNameTheirPlace) {
  auto expectError = [](const std::string& text, const std::string& fragment) {
    try {
      ResourceJson::resourceFromJson(parse(text), "/path");
      ADD_FAILURE() << "no exception for " << text;
    } catch (const std::invalid_argument& error) {
      EXPECT_NE(std::string::npos, std::string(error.what()).find(fragment)) << error.what();
    }
  };
  expectError(R"({"k": 3})", "/path.k");
  expectError(R"({"k": {"int": 1.5}})", "\"int\"");
  expectError(R"({"k": {"int": 4294967296}})", "\"int\"");
  expectError(R"({"k": {"bytes": [256]}})", "/path.k[0]");
  expectError(R"({"k": {"complex": 1}})", "unknown value type \"complex\"");
  expectError(R"({"k": {"int": 1, "string": "x"}})", "one key");
  expectError(R"({"k": {"list": [{"int": "x"}]}})", "/path.k[0]");
  expectError(R"({"k": {"map": {"m": {"bool": 1}}}})", "/path.k.m");
}

}  // namespace
}  // namespace halvor::sim
