#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/util/json_util.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "NestedResources.h"
#include "kelo/common/ResourceDepth.h"

namespace halvor::kelo {
namespace {

using test::NestedResources;
using Through = NestedResources::Through;

TEST(ResourceDepthTest, CountsValueLevels) {
  EXPECT_EQ(ResourceDepth::of(protobuf::Resource()), 0);
  EXPECT_EQ(ResourceDepth::of(NestedResources::deep(1, Through::Lists)), 1);
  EXPECT_EQ(ResourceDepth::of(NestedResources::deep(5, Through::Maps)), 5);
  EXPECT_EQ(ResourceDepth::of(NestedResources::deep(7, Through::Both)), 7);
  EXPECT_EQ(ResourceDepth::of(NestedResources::keyed("abc")), 2);
}

TEST(ResourceDepthTest, StopsCountingOnePastTheLimit) {
  EXPECT_EQ(ResourceDepth::of(NestedResources::deep(500, Through::Lists)),
            ResourceDepth::kMaxDepth + 1);
}

TEST(ResourceDepthTest, TheLimitIsWhatProtobufsPrinterFinishes) {
  google::protobuf::LogSilencer quiet;
  for (const Through through : {Through::Lists, Through::Maps, Through::Both}) {
    std::string json;
    EXPECT_TRUE(google::protobuf::util::MessageToJsonString(
                    NestedResources::deep(ResourceDepth::kMaxDepth, through), &json)
                    .ok());
    EXPECT_FALSE(google::protobuf::util::MessageToJsonString(
                     NestedResources::deep(ResourceDepth::kMaxDepth + 1, through), &json)
                     .ok());
  }
}

TEST(ResourceDepthTest, CheckRefusesOnlyWhatIsDeeperThanTheLimit) {
  EXPECT_NO_THROW(
      ResourceDepth::check(NestedResources::deep(ResourceDepth::kMaxDepth, Through::Both)));
  const protobuf::Resource tooDeep =
      NestedResources::deep(ResourceDepth::kMaxDepth + 1, Through::Both);
  EXPECT_THROW(ResourceDepth::check(tooDeep), std::length_error);
  EXPECT_THROW(ResourceDepth::check(tooDeep.values().at("deep")), std::length_error);
  try {
    ResourceDepth::check(tooDeep);
  } catch (const std::length_error& error) {
    EXPECT_NE(std::string(error.what()).find("deeper than 63 levels"), std::string::npos)
        << error.what();
  }
}

}  // namespace
}  // namespace halvor::kelo
