#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::tavelabi {
namespace {

using Type = ResourceValueType;

TEST(ResourceValueTest, DefaultIsUnspecified) {
  ResourceValue value;
  EXPECT_EQ(value.getType(), Type::UNSPECIFIED_RESOURCE_TYPE);
}

TEST(ResourceValueTest, ConstructorsGiveTheirTypes) {
  EXPECT_EQ(ResourceValue(true).getType(), Type::BOOL);
  EXPECT_EQ(ResourceValue(7).getType(), Type::INT32);
  EXPECT_EQ(ResourceValue(2.5).getType(), Type::DOUBLE);
  EXPECT_EQ(ResourceValue(std::string("x")).getType(), Type::STRING);
  EXPECT_EQ(ResourceValue(ResourceValue::Map{}).getType(), Type::MAP_VALUE);
  EXPECT_EQ(ResourceValue(std::vector<std::string>{}).getType(), Type::LIST_VALUE);
}

TEST(ResourceValueTest, StringLiteralBecomesString) {
  ResourceValue value("text");
  ASSERT_EQ(value.getType(), Type::STRING);
  EXPECT_EQ(value.getStringValue(), "text");
}

TEST(ResourceValueTest, ConstructorsKeepTheirContent) {
  EXPECT_TRUE(ResourceValue(true).getBoolValue());
  EXPECT_FALSE(ResourceValue(false).getBoolValue());
  EXPECT_EQ(ResourceValue(-42).getIntValue(), -42);
  EXPECT_DOUBLE_EQ(ResourceValue(2.5).getDoubleValue(), 2.5);
  EXPECT_EQ(ResourceValue(std::string("abc")).getStringValue(), "abc");
}

TEST(ResourceValueTest, ListFromTextsHoldsStringsInOrder) {
  ResourceValue value(std::vector<std::string>{"sunday", "monday", "friday"});
  ASSERT_EQ(value.getType(), Type::LIST_VALUE);
  const ResourceValue::List& list = value.getListValue();
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0].getType(), Type::STRING);
  EXPECT_EQ(list[0].getStringValue(), "sunday");
  EXPECT_EQ(list[1].getType(), Type::STRING);
  EXPECT_EQ(list[1].getStringValue(), "monday");
  EXPECT_EQ(list[2].getType(), Type::STRING);
  EXPECT_EQ(list[2].getStringValue(), "friday");
}

TEST(ResourceValueTest, MapConstructorKeepsKeysInOrder) {
  ResourceValue value(ResourceValue::Map{{"b", 2}, {"a", 1}});
  const ResourceValue::Map& map = value.getMapValue();
  ASSERT_EQ(map.size(), 2U);
  EXPECT_EQ(map.begin()->first, "a");
  EXPECT_EQ(map.at("a").getIntValue(), 1);
  EXPECT_EQ(map.at("b").getIntValue(), 2);
}

TEST(ResourceValueTest, SetTypeGivesEmptyContent) {
  ResourceValue value(99);
  value.setType(Type::BOOL);
  EXPECT_EQ(value.getType(), Type::BOOL);
  EXPECT_FALSE(value.getBoolValue());
  value.setType(Type::FLOAT);
  EXPECT_EQ(value.getFloatValue(), 0.0F);
  value.setType(Type::DOUBLE);
  EXPECT_EQ(value.getDoubleValue(), 0.0);
  value.setType(Type::INT32);
  EXPECT_EQ(value.getIntValue(), 0);
  value.setType(Type::UINT8_ARRAY);
  EXPECT_EQ(value.getByteArraySize(), 0U);
  value.setType(Type::LIST_VALUE);
  EXPECT_TRUE(value.getListValue().empty());
  value.setType(Type::MAP_VALUE);
  EXPECT_TRUE(value.getMapValue().empty());
  value.setType(Type::STRING);
  EXPECT_EQ(value.getStringValue(), "");
  value.setType(Type::UNSPECIFIED_RESOURCE_TYPE);
  EXPECT_EQ(value.getType(), Type::UNSPECIFIED_RESOURCE_TYPE);
}

TEST(ResourceValueTest, SetTypeOfAnUnknownNumberThrows) {
  ResourceValue value(5);
  EXPECT_THROW(value.setType(static_cast<Type>(42)), WrongResourceValueType);
  EXPECT_EQ(value.getIntValue(), 5);
}

TEST(ResourceValueTest, SettersSwitchTheType) {
  ResourceValue value;
  value.setType(Type::FLOAT);
  value.setFloatValue(1.5F);
  EXPECT_EQ(value.getType(), Type::FLOAT);
  EXPECT_EQ(value.getFloatValue(), 1.5F);

  value.setStringValue("now text");
  EXPECT_EQ(value.getType(), Type::STRING);
  EXPECT_EQ(value.getStringValue(), "now text");

  value.setBoolValue(true);
  EXPECT_EQ(value.getType(), Type::BOOL);
  EXPECT_TRUE(value.getBoolValue());

  value.setDoubleValue(-0.25);
  EXPECT_EQ(value.getType(), Type::DOUBLE);
  EXPECT_EQ(value.getDoubleValue(), -0.25);

  value.setIntValue(-7);
  EXPECT_EQ(value.getType(), Type::INT32);
  EXPECT_EQ(value.getIntValue(), -7);

  value.setByteArray({1, 2, 255});
  EXPECT_EQ(value.getType(), Type::UINT8_ARRAY);
  ASSERT_EQ(value.getByteArraySize(), 3U);
  EXPECT_EQ(value.getByteArray()[0], 1);
  EXPECT_EQ(value.getByteArray()[2], 255);

  value.setList({ResourceValue(1), ResourceValue("two")});
  EXPECT_EQ(value.getType(), Type::LIST_VALUE);
  ASSERT_EQ(value.getListValue().size(), 2U);
  EXPECT_EQ(value.getListValue()[1].getStringValue(), "two");

  value.setMap({{"k", ResourceValue(true)}});
  EXPECT_EQ(value.getType(), Type::MAP_VALUE);
  EXPECT_TRUE(value.getMapValue().at("k").getBoolValue());
}

TEST(ResourceValueTest, EmptyByteArrayHasSizeZero) {
  ResourceValue value;
  value.setType(Type::UINT8_ARRAY);
  value.setByteArray({});
  EXPECT_EQ(value.getByteArraySize(), 0U);
  (void)value.getByteArray();  // may be null for an empty array; it must not throw
}

// Every getter, called on every type it does not read, throws instead of reading.
TEST(ResourceValueTest, EveryGetterOfAWrongTypeThrows) {
  const std::vector<std::pair<Type, std::function<void(const ResourceValue&)>>> getters = {
      {Type::BOOL, [](const ResourceValue& v) { (void)v.getBoolValue(); }},
      {Type::FLOAT, [](const ResourceValue& v) { (void)v.getFloatValue(); }},
      {Type::DOUBLE, [](const ResourceValue& v) { (void)v.getDoubleValue(); }},
      {Type::INT32, [](const ResourceValue& v) { (void)v.getIntValue(); }},
      {Type::UINT8_ARRAY, [](const ResourceValue& v) { (void)v.getByteArray(); }},
      {Type::UINT8_ARRAY, [](const ResourceValue& v) { (void)v.getByteArraySize(); }},
      {Type::LIST_VALUE, [](const ResourceValue& v) { (void)v.getListValue(); }},
      {Type::MAP_VALUE, [](const ResourceValue& v) { (void)v.getMapValue(); }},
      {Type::STRING, [](const ResourceValue& v) { (void)v.getStringValue(); }},
  };
  for (int number = 0; number <= 8; ++number) {
    ResourceValue value;
    value.setType(static_cast<Type>(number));
    for (const auto& [readType, getter] : getters) {
      SCOPED_TRACE(std::string("held ") + toString(value.getType()) + ", read " +
                   toString(readType));
      if (readType == value.getType()) {
        EXPECT_NO_THROW(getter(value));
      } else {
        EXPECT_THROW(getter(value), WrongResourceValueType);
      }
    }
  }
}

TEST(ResourceValueTest, WrongTypeTextNamesBothTypes) {
  ResourceValue value(3);
  try {
    (void)value.getStringValue();
    FAIL() << "no exception";
  } catch (const WrongResourceValueType& error) {
    const std::string text = error.what();
    EXPECT_NE(text.find("INT32"), std::string::npos) << text;
    EXPECT_NE(text.find("STRING"), std::string::npos) << text;
  }
}

TEST(ResourceValueTest, CopyOfNestedListIsDeep) {
  ResourceValue inner(ResourceValue::Map{{"name", "first"}});
  ResourceValue original;
  original.setType(Type::LIST_VALUE);
  original.setList({inner, ResourceValue(1)});

  ResourceValue copy(original);
  ResourceValue::List changed = copy.getListValue();
  changed[0].setMap({{"name", "second"}});
  copy.setList(changed);

  EXPECT_EQ(original.getListValue()[0].getMapValue().at("name").getStringValue(), "first");
  EXPECT_EQ(copy.getListValue()[0].getMapValue().at("name").getStringValue(), "second");
  EXPECT_FALSE(original == copy);
}

TEST(ResourceValueTest, AssignmentOfNestedMapIsDeep) {
  ResourceValue original(ResourceValue::Map{
      {"outer", ResourceValue(ResourceValue::Map{{"inner", ResourceValue(1)}})}});
  ResourceValue copy;
  copy = original;
  EXPECT_TRUE(copy == original);

  ResourceValue::Map outer = copy.getMapValue();
  ResourceValue::Map inner = outer.at("outer").getMapValue();
  inner["inner"] = ResourceValue(2);
  outer["outer"].setMap(inner);
  copy.setMap(outer);

  EXPECT_EQ(original.getMapValue().at("outer").getMapValue().at("inner").getIntValue(), 1);
  EXPECT_EQ(copy.getMapValue().at("outer").getMapValue().at("inner").getIntValue(), 2);
}

TEST(ResourceValueTest, CopiesDoNotShareStorage) {
  ResourceValue original(std::vector<std::string>{"a"});
  ResourceValue copy = original;
  EXPECT_NE(&original.getListValue(), &copy.getListValue());
}

TEST(ResourceValueTest, MovedFromValueIsUnspecifiedAndUsable) {
  ResourceValue source(std::vector<std::string>{"a", "b"});
  ResourceValue target(std::move(source));
  EXPECT_EQ(target.getListValue().size(), 2U);
  EXPECT_EQ(source.getType(), Type::UNSPECIFIED_RESOURCE_TYPE);  // NOLINT(bugprone-use-after-move)
  source = target;
  EXPECT_TRUE(source == target);

  ResourceValue other;
  other = std::move(target);
  EXPECT_EQ(other.getListValue().size(), 2U);
}

TEST(ResourceValueTest, AssignFromOwnElement) {
  ResourceValue value;
  value.setList({ResourceValue("kept"), ResourceValue(2)});
  value = value.getListValue()[0];
  ASSERT_EQ(value.getType(), Type::STRING);
  EXPECT_EQ(value.getStringValue(), "kept");

  ResourceValue nested(ResourceValue::Map{{"k", ResourceValue(true)}});
  nested = nested.getMapValue().at("k");
  EXPECT_TRUE(nested.getBoolValue());
}

TEST(ResourceValueTest, SetListFromOwnList) {
  ResourceValue value(std::vector<std::string>{"x", "y"});
  value.setList(value.getListValue());
  ASSERT_EQ(value.getListValue().size(), 2U);
  EXPECT_EQ(value.getListValue()[1].getStringValue(), "y");
}

TEST(ResourceValueTest, SelfAssignmentKeepsContent) {
  ResourceValue value(std::vector<std::string>{"x"});
  ResourceValue& alias = value;
  value = alias;
  EXPECT_EQ(value.getListValue()[0].getStringValue(), "x");
}

TEST(ResourceValueTest, EqualityIsDeepAndTypeAware) {
  EXPECT_TRUE(ResourceValue() == ResourceValue());
  EXPECT_TRUE(ResourceValue(1) == ResourceValue(1));
  EXPECT_FALSE(ResourceValue(1) == ResourceValue(2));
  EXPECT_FALSE(ResourceValue(1) == ResourceValue(1.0));
  EXPECT_FALSE(ResourceValue(true) == ResourceValue(1));
  EXPECT_TRUE(ResourceValue("a") == ResourceValue(std::string("a")));

  ResourceValue floatValue;
  floatValue.setFloatValue(1.0F);
  EXPECT_FALSE(floatValue == ResourceValue(1.0));

  ResourceValue left(ResourceValue::Map{{"l", ResourceValue(std::vector<std::string>{"a"})}});
  ResourceValue right(ResourceValue::Map{{"l", ResourceValue(std::vector<std::string>{"a"})}});
  EXPECT_TRUE(left == right);
  ResourceValue differs(ResourceValue::Map{{"l", ResourceValue(std::vector<std::string>{"b"})}});
  EXPECT_FALSE(left == differs);

  ResourceValue bytesA;
  bytesA.setByteArray({1, 2});
  ResourceValue bytesB;
  bytesB.setByteArray({1, 2});
  EXPECT_TRUE(bytesA == bytesB);
  bytesB.setByteArray({1, 3});
  EXPECT_FALSE(bytesA == bytesB);
}

TEST(ResourceValueTest, IntGetterReturnsReferenceToHeldValue) {
  ResourceValue value(12);
  const int32_t& first = value.getIntValue();
  const int32_t& second = value.getIntValue();
  EXPECT_EQ(&first, &second);
}

}  // namespace
}  // namespace halvor::tavelabi
