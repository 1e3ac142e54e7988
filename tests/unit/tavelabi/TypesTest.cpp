#include <gtest/gtest.h>

#include "tavelabi/Types.h"

namespace halvor::tavelabi {
namespace {

TEST(TypesTest, VerbNumbers) {
  EXPECT_EQ(static_cast<int>(CCRUD::Command), 0);
  EXPECT_EQ(static_cast<int>(CCRUD::Create), 1);
  EXPECT_EQ(static_cast<int>(CCRUD::Read), 2);
  EXPECT_EQ(static_cast<int>(CCRUD::Update), 3);
  EXPECT_EQ(static_cast<int>(CCRUD::Delete), 4);
  EXPECT_EQ(static_cast<int>(CCRUD::None), 5);
}

TEST(TypesTest, VerbNames) {
  EXPECT_STREQ(toString(CCRUD::Command), "Command");
  EXPECT_STREQ(toString(CCRUD::Create), "Create");
  EXPECT_STREQ(toString(CCRUD::Read), "Read");
  EXPECT_STREQ(toString(CCRUD::Update), "Update");
  EXPECT_STREQ(toString(CCRUD::Delete), "Delete");
  EXPECT_STREQ(toString(CCRUD::None), "None");
  EXPECT_STREQ(toString(static_cast<CCRUD>(9)), "?");
}

TEST(TypesTest, ValueTypeNames) {
  EXPECT_STREQ(toString(ResourceValueType::UNSPECIFIED_RESOURCE_TYPE), "UNSPECIFIED_RESOURCE_TYPE");
  EXPECT_STREQ(toString(ResourceValueType::BOOL), "BOOL");
  EXPECT_STREQ(toString(ResourceValueType::FLOAT), "FLOAT");
  EXPECT_STREQ(toString(ResourceValueType::DOUBLE), "DOUBLE");
  EXPECT_STREQ(toString(ResourceValueType::INT32), "INT32");
  EXPECT_STREQ(toString(ResourceValueType::UINT8_ARRAY), "UINT8_ARRAY");
  EXPECT_STREQ(toString(ResourceValueType::LIST_VALUE), "LIST_VALUE");
  EXPECT_STREQ(toString(ResourceValueType::MAP_VALUE), "MAP_VALUE");
  EXPECT_STREQ(toString(ResourceValueType::STRING), "STRING");
  EXPECT_STREQ(toString(static_cast<ResourceValueType>(-1)), "?");
}

}  // namespace
}  // namespace halvor::tavelabi
