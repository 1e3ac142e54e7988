#include <gtest/gtest.h>

#include <string>

#include "tavelabi/BuildIdentifier.h"

namespace halvor::tavelabi {
namespace {

TEST(BuildIdentifierTest, TextOfThisBuild) {
  EXPECT_EQ(std::string(BuildIdentifier(2, 59, 2, "r0")), "2.59.2-r0");
}

TEST(BuildIdentifierTest, OtherNumbers) {
  EXPECT_EQ(std::string(BuildIdentifier(10, 0, 123, "rc1")), "10.0.123-rc1");
}

TEST(BuildIdentifierTest, EmptyRevisionHasNoDash) {
  EXPECT_EQ(std::string(BuildIdentifier(1, 2, 3, "")), "1.2.3");
}

}  // namespace
}  // namespace halvor::tavelabi
