#include <gtest/gtest.h>

#include <stdexcept>

#include "tavelabi/Resource.h"

namespace halvor::tavelabi {
namespace {

TEST(ResourceTest, SingleValueLivesUnderValueKey) {
  Resource resource(ResourceValue(17));
  ASSERT_EQ(resource.values.size(), 1U);
  EXPECT_EQ(resource.values.at("value").getIntValue(), 17);
}

TEST(ResourceTest, AtOnEmptyResourceThrowsOutOfRange) {
  Resource resource;
  EXPECT_TRUE(resource.values.empty());
  EXPECT_THROW((void)resource.values.at("value"), std::out_of_range);
}

TEST(ResourceTest, ImplicitConversionFromValue) {
  Resource resource = ResourceValue("text");
  EXPECT_EQ(resource.values.at("value").getStringValue(), "text");
}

TEST(ResourceTest, KeyedConstructor) {
  Resource resource("set_value", ResourceValue(true));
  ASSERT_EQ(resource.values.size(), 1U);
  EXPECT_TRUE(resource.values.at("set_value").getBoolValue());
  EXPECT_EQ(resource.values.count("value"), 0U);
}

TEST(ResourceTest, AddValueInsertsOrReplaces) {
  Resource resource;
  resource.addValue("a", ResourceValue(1));
  resource.addValue("b", ResourceValue(2));
  resource.addValue("a", ResourceValue(3));
  ASSERT_EQ(resource.values.size(), 2U);
  EXPECT_EQ(resource.values.at("a").getIntValue(), 3);
  EXPECT_EQ(resource.values.at("b").getIntValue(), 2);
}

TEST(ResourceTest, UpdateValueInsertsOrReplaces) {
  Resource resource(ResourceValue(1));
  resource.updateValue("value", ResourceValue("changed"));
  resource.updateValue("new", ResourceValue(false));
  ASSERT_EQ(resource.values.size(), 2U);
  EXPECT_EQ(resource.values.at("value").getStringValue(), "changed");
  EXPECT_FALSE(resource.values.at("new").getBoolValue());
}

TEST(ResourceTest, RemoveValueOfMissingKeyIsNoError) {
  Resource resource(ResourceValue(1));
  EXPECT_NO_THROW(resource.removeValue("absent"));
  EXPECT_EQ(resource.values.size(), 1U);
  resource.removeValue("value");
  EXPECT_TRUE(resource.values.empty());
}

TEST(ResourceTest, IterationIsInKeyOrder) {
  Resource resource;
  resource.addValue("zeta", ResourceValue(1));
  resource.addValue("alpha", ResourceValue(2));
  resource.addValue("mid", ResourceValue(3));
  std::string keys;
  for (const auto& [key, value] : resource.values) keys += key + ",";
  EXPECT_EQ(keys, "alpha,mid,zeta,");
}

TEST(ResourceTest, CopyIsDeep) {
  Resource original(ResourceValue(ResourceValue::Map{{"k", ResourceValue(1)}}));
  Resource copy = original;
  copy.values.at("value").setMap({{"k", ResourceValue(2)}});
  EXPECT_EQ(original.values.at("value").getMapValue().at("k").getIntValue(), 1);
  EXPECT_EQ(copy.values.at("value").getMapValue().at("k").getIntValue(), 2);
}

}  // namespace
}  // namespace halvor::tavelabi
