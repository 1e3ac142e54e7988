#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "HostValues.h"
#include "NestedResources.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/common/ResourceDepth.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {
namespace {

using google::protobuf::util::MessageDifferencer;
using tavelabi::ResourceValueType;
using HostValue = tavelabi::ResourceValue;
using kelo::test::HostValues;
using Message = protobuf::ResourceValue;

HostValue listOf(const std::vector<HostValue>& elements) {
  HostValue value;
  value.setType(ResourceValueType::LIST_VALUE);
  value.setList(elements);
  return value;
}

// host -> message -> JSON (shared print options) -> message (shared parse options) -> host
tavelabi::Resource throughJson(const tavelabi::Resource& resource) {
  const std::string json = JsonOptions::toJson(ResourceConverter::toHalvorPbResource(resource));
  protobuf::Resource parsed;
  const auto status = JsonOptions::fromJson(json, parsed);
  EXPECT_TRUE(status.ok()) << status.ToString() << " in " << json;
  return ResourceConverter::toTavelAbiResource(parsed);
}

HostValue throughJson(const HostValue& value) {
  return throughJson(tavelabi::Resource(value)).values.at("value");
}

// ---- host -> message ----

TEST(ResourceConverterTest, ScalarsGetTypeAndWrapper) {
  const Message boolean = ResourceConverter::toHalvorPbResourceValue(HostValue(false));
  EXPECT_EQ(boolean.type(), Message::BOOL);
  ASSERT_TRUE(boolean.has_boolvalue());
  EXPECT_FALSE(boolean.boolvalue().value());

  const Message single = ResourceConverter::toHalvorPbResourceValue(HostValues::floatValue(1.5F));
  EXPECT_EQ(single.type(), Message::FLOAT);
  EXPECT_EQ(single.floatvalue().value(), 1.5F);

  const Message dbl = ResourceConverter::toHalvorPbResourceValue(HostValue(2.25));
  EXPECT_EQ(dbl.type(), Message::DOUBLE);
  EXPECT_EQ(dbl.doublevalue().value(), 2.25);

  const Message integer = ResourceConverter::toHalvorPbResourceValue(HostValue(-7));
  EXPECT_EQ(integer.type(), Message::INT32);
  EXPECT_EQ(integer.intvalue().value(), -7);

  const Message text = ResourceConverter::toHalvorPbResourceValue(HostValue(std::string("t")));
  EXPECT_EQ(text.type(), Message::STRING);
  EXPECT_EQ(text.stringvalue().value(), "t");
}

TEST(ResourceConverterTest, UnspecifiedGivesDefaultMessage) {
  const Message message = ResourceConverter::toHalvorPbResourceValue(HostValue());
  EXPECT_EQ(message.ByteSizeLong(), 0U);
}

TEST(ResourceConverterTest, ByteArraySetsBytesButNoType) {
  const Message message =
      ResourceConverter::toHalvorPbResourceValue(HostValues::bytesValue({0x01, 0xFE}));
  ASSERT_TRUE(message.has_bytesvalue());
  EXPECT_EQ(message.bytesvalue().value(), std::string("\x01\xFE", 2));
  EXPECT_EQ(message.type(), Message::UNSPECIFIED_RESOURCE_TYPE);
}

TEST(ResourceConverterTest, ByteArrayComesBackFromJsonUnspecified) {
  const HostValue back = throughJson(HostValues::bytesValue({0x01, 0x02}));
  EXPECT_EQ(back.getType(), ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);
}

TEST(ResourceConverterTest, EmptyByteArrayStillSetsBytes) {
  const Message message = ResourceConverter::toHalvorPbResourceValue(HostValues::bytesValue({}));
  EXPECT_TRUE(message.has_bytesvalue());
  EXPECT_EQ(message.bytesvalue().value(), "");
}

TEST(ResourceConverterTest, ListAndMapRecurse) {
  HostValue::Map inner{{"k", HostValue(1)}};
  const HostValue value = listOf({HostValue(std::string("a")), HostValue(inner)});
  const Message message = ResourceConverter::toHalvorPbResourceValue(value);
  EXPECT_EQ(message.type(), Message::LIST_VALUE);
  ASSERT_EQ(message.listvalue_size(), 2);
  EXPECT_EQ(message.listvalue(0).stringvalue().value(), "a");
  EXPECT_EQ(message.listvalue(1).type(), Message::MAP_VALUE);
  EXPECT_EQ(message.listvalue(1).mapvalue().at("k").intvalue().value(), 1);
}

// ---- message -> host ----

TEST(ResourceConverterTest, UnsetWrapperGivesDefault) {
  Message message;
  message.set_type(Message::BOOL);
  HostValue value = ResourceConverter::toTavelAbiResourceValue(message);
  EXPECT_EQ(value.getType(), ResourceValueType::BOOL);
  EXPECT_FALSE(value.getBoolValue());

  message.set_type(Message::STRING);
  value = ResourceConverter::toTavelAbiResourceValue(message);
  EXPECT_EQ(value.getType(), ResourceValueType::STRING);
  EXPECT_EQ(value.getStringValue(), "");

  message.set_type(Message::INT32);
  EXPECT_EQ(ResourceConverter::toTavelAbiResourceValue(message).getIntValue(), 0);
}

TEST(ResourceConverterTest, TypeDecidesWhichMemberIsRead) {
  Message message;
  message.set_type(Message::INT32);
  message.mutable_intvalue()->set_value(4);
  message.mutable_stringvalue()->set_value("ignored");
  const HostValue value = ResourceConverter::toTavelAbiResourceValue(message);
  EXPECT_EQ(value.getType(), ResourceValueType::INT32);
  EXPECT_EQ(value.getIntValue(), 4);
}

TEST(ResourceConverterTest, MissingOrUnknownTypeLosesTheValue) {
  Message message;
  message.mutable_intvalue()->set_value(3);
  EXPECT_EQ(ResourceConverter::toTavelAbiResourceValue(message).getType(),
            ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);

  message.set_type(static_cast<Message::ValueType>(5));
  EXPECT_EQ(ResourceConverter::toTavelAbiResourceValue(message).getType(),
            ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);
  message.set_type(static_cast<Message::ValueType>(42));
  EXPECT_EQ(ResourceConverter::toTavelAbiResourceValue(message).getType(),
            ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);
}

TEST(ResourceConverterTest, JsonValueWithoutTypeIsUnspecified) {
  protobuf::Resource message;
  ASSERT_TRUE(JsonOptions::fromJson(R"({"values":{"value":{"intValue":3}}})", message).ok());
  const tavelabi::Resource resource = ResourceConverter::toTavelAbiResource(message);
  ASSERT_EQ(resource.values.count("value"), 1U);
  EXPECT_EQ(resource.values.at("value").getType(), ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);
}

TEST(ResourceConverterTest, TypeNineCarriesTheWholeMessageAsBytes) {
  Message message;
  message.set_type(Message::SERIALIZED_RESOURCE_VALUE);
  message.mutable_bytesvalue()->set_value("not these bytes");
  message.mutable_stringvalue()->set_value("inside");
  Message* element = message.add_listvalue();
  element->set_type(Message::INT32);
  element->mutable_intvalue()->set_value(9);

  const HostValue value = ResourceConverter::toTavelAbiResourceValue(message);
  ASSERT_EQ(value.getType(), ResourceValueType::UINT8_ARRAY);
  const std::string bytes(reinterpret_cast<const char*>(value.getByteArray()),
                          value.getByteArraySize());
  EXPECT_NE(bytes, "not these bytes");
  Message reparsed;
  ASSERT_TRUE(reparsed.ParseFromString(bytes));
  EXPECT_TRUE(MessageDifferencer::Equals(reparsed, message));
}

TEST(ResourceConverterTest, EmptyListStopsWithoutSetList) {
  Message message;
  message.set_type(Message::LIST_VALUE);
  const HostValue value = ResourceConverter::toTavelAbiResourceValue(message);
  EXPECT_EQ(value.getType(), ResourceValueType::LIST_VALUE);
  EXPECT_TRUE(value.getListValue().empty());
}

TEST(ResourceConverterTest, EmptyMapStopsWithoutSetMap) {
  Message message;
  message.set_type(Message::MAP_VALUE);
  const HostValue value = ResourceConverter::toTavelAbiResourceValue(message);
  EXPECT_EQ(value.getType(), ResourceValueType::MAP_VALUE);
  EXPECT_TRUE(value.getMapValue().empty());
}

// ---- round trips ----

TEST(ResourceConverterTest, ListOfThreeStringsKeepsOrder) {
  const HostValue list(std::vector<std::string>{"c", "a", "b"});
  const HostValue back =
      ResourceConverter::toTavelAbiResourceValue(ResourceConverter::toHalvorPbResourceValue(list));
  EXPECT_EQ(back, list);
  ASSERT_EQ(back.getListValue().size(), 3U);
  EXPECT_EQ(back.getListValue()[0].getStringValue(), "c");
  EXPECT_EQ(back.getListValue()[2].getStringValue(), "b");
  EXPECT_EQ(throughJson(list), list);
}

TEST(ResourceConverterTest, EmptyListAndMapComeBackEmptyThroughJson) {
  const HostValue emptyList = throughJson(listOf({}));
  EXPECT_EQ(emptyList.getType(), ResourceValueType::LIST_VALUE);
  EXPECT_TRUE(emptyList.getListValue().empty());

  const HostValue emptyMap = throughJson(HostValue(HostValue::Map{}));
  EXPECT_EQ(emptyMap.getType(), ResourceValueType::MAP_VALUE);
  EXPECT_TRUE(emptyMap.getMapValue().empty());
}

TEST(ResourceConverterTest, EveryScalarSurvivesJson) {
  const std::vector<HostValue> values = {
      HostValue(true),
      HostValue(false),
      HostValues::floatValue(0.1F),
      HostValues::floatValue(-3.4e38F),
      HostValues::floatValue(std::numeric_limits<float>::denorm_min()),
      HostValue(0.1),
      HostValue(-1e308),
      HostValue(std::numeric_limits<double>::infinity()),
      HostValue(0),
      HostValue(std::numeric_limits<int32_t>::min()),
      HostValue(std::numeric_limits<int32_t>::max()),
      HostValue(std::string()),
      HostValue(std::string("ünï \"quoted\" \\ \n tab\t")),
  };
  for (const HostValue& value : values) {
    const HostValue back = throughJson(value);
    EXPECT_EQ(back, value) << JsonOptions::toJson(
        ResourceConverter::toHalvorPbResourceValue(value));
  }
}

TEST(ResourceConverterTest, NotANumberSurvivesJson) {
  const HostValue back = throughJson(HostValue(std::nan("")));
  ASSERT_EQ(back.getType(), ResourceValueType::DOUBLE);
  EXPECT_TRUE(std::isnan(back.getDoubleValue()));
}

// The JSON printer writes a negative zero as "-0", which the reader takes for the integer 0: the
// value survives, its sign does not. A client that writes "-0.0" reaches the host with the sign.
TEST(ResourceConverterTest, NegativeZeroKeepsItsValueThroughJson) {
  const HostValue back = throughJson(HostValue(-0.0));
  ASSERT_EQ(back.getType(), ResourceValueType::DOUBLE);
  EXPECT_EQ(back.getDoubleValue(), 0.0);

  protobuf::Resource parsed;
  ASSERT_TRUE(
      JsonOptions::fromJson(R"({"values":{"d":{"type":"DOUBLE","doubleValue":-0.0}}})", parsed)
          .ok());
  const HostValue fromClient = ResourceConverter::toTavelAbiResource(parsed).values.at("d");
  EXPECT_EQ(fromClient.getDoubleValue(), 0.0);
  EXPECT_TRUE(std::signbit(fromClient.getDoubleValue()));
}

TEST(ResourceConverterTest, NestedListsAndMapsSurviveJson) {
  const HostValue::Map deepest{{"flag", HostValue(true)}, {"text", HostValue("x")}};
  const HostValue::Map middle{{"list", listOf({HostValue(1), HostValue(deepest), listOf({}),
                                               HostValues::floatValue(2.5F)})},
                              {"empty", HostValue(HostValue::Map{})},
                              {"number", HostValue(6.25)}};
  tavelabi::Resource resource;
  resource.values["value"] = listOf({HostValue(middle), HostValue(std::vector<std::string>{"a"})});
  resource.values["other"] = HostValue(middle);
  resource.values["plain"] = HostValue(-1);

  const tavelabi::Resource back = throughJson(resource);
  EXPECT_EQ(back.values, resource.values);
}

TEST(ResourceConverterTest, EmptyResourceBothWays) {
  EXPECT_TRUE(ResourceConverter::toHalvorPbResource(tavelabi::Resource()).values().empty());
  EXPECT_TRUE(ResourceConverter::toTavelAbiResource(protobuf::Resource()).values.empty());
}

TEST(ResourceConverterTest, ResourceKeepsEveryKey) {
  tavelabi::Resource resource;
  resource.values["b"] = HostValue(2);
  resource.values["a"] = HostValue("one");
  const protobuf::Resource message = ResourceConverter::toHalvorPbResource(resource);
  ASSERT_EQ(message.values_size(), 2);
  EXPECT_EQ(message.values().at("a").stringvalue().value(), "one");
  EXPECT_EQ(message.values().at("b").intvalue().value(), 2);
  EXPECT_FALSE(message.has_path());
  EXPECT_EQ(ResourceConverter::toTavelAbiResource(message).values, resource.values);
}

TEST(ResourceConverterTest, PathOfMessageDoesNotReachHost) {
  protobuf::Resource message;
  message.mutable_path()->set_value("/x");
  EXPECT_TRUE(ResourceConverter::toTavelAbiResource(message).values.empty());
}

TEST(ResourceConverterTest, TooDeepMessageIsRefusedBeforeItReachesTheHost) {
  using Through = test::NestedResources::Through;
  const protobuf::Resource deepest =
      test::NestedResources::deep(ResourceDepth::kMaxDepth, Through::Both);
  const tavelabi::Resource converted = ResourceConverter::toTavelAbiResource(deepest);
  EXPECT_EQ(converted.values.size(), 1u);
  EXPECT_NO_THROW(ResourceConverter::toTavelAbiResourceValue(deepest.values().at("deep")));

  const protobuf::Resource tooDeep =
      test::NestedResources::deep(ResourceDepth::kMaxDepth + 1, Through::Lists);
  EXPECT_THROW(ResourceConverter::toTavelAbiResource(tooDeep), std::length_error);
  EXPECT_THROW(ResourceConverter::toTavelAbiResourceValue(tooDeep.values().at("deep")),
               std::length_error);
}

TEST(ResourceConverterTest, TypeNineGivesEqualBytesForEqualMessages) {
  auto serialized = [](const std::string& keys) {
    Message message = test::NestedResources::keyed(keys).values().at("nested");
    message.set_type(Message::SERIALIZED_RESOURCE_VALUE);
    const HostValue value = ResourceConverter::toTavelAbiResourceValue(message);
    return std::string(reinterpret_cast<const char*>(value.getByteArray()),
                       value.getByteArraySize());
  };
  EXPECT_EQ(serialized("abcdefghijklmnopqrstuvwxyz"), serialized("zyxwvutsrqponmlkjihgfedcba"));
}

}  // namespace
}  // namespace halvor::kelo
