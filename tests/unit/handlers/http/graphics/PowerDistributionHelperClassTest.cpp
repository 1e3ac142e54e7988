#include <gtest/gtest.h>

#include "kelo/handlers/http/graphics/GetPowerDistributionHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

TEST(PowerDistributionDecodeTest, XInHundredthsAndYSigned) {
  const auto result =
      GraphicsDecoders::powerDistribution(words16({12345, static_cast<std::uint16_t>(-5)}));
  ASSERT_EQ(result->points_size(), 1);
  EXPECT_EQ(result->points(0).x().value(), 123.45);
  EXPECT_EQ(result->points(0).y().value(), -5.0);
}

TEST(PowerDistributionDecodeTest, OnlyWholeEntriesMakeACurve) {
  EXPECT_EQ(GraphicsDecoders::powerDistribution(Bytes(6, 1))->points_size(), 0);
  EXPECT_EQ(GraphicsDecoders::powerDistribution(Bytes(8, 1))->points_size(), 2);
  EXPECT_EQ(GraphicsDecoders::powerDistribution(Bytes(9, 1))->points_size(), 0);
  EXPECT_EQ(GraphicsDecoders::powerDistribution(Bytes(1, 1))->points_size(), 0);
  EXPECT_EQ(GraphicsDecoders::powerDistribution({})->points_size(), 0);
}

TEST(PowerDistributionDecodeTest, XIsUnsigned) {
  const auto result = GraphicsDecoders::powerDistribution(words16({65535, 32767}));
  EXPECT_EQ(result->points(0).x().value(), 655.35);
  EXPECT_EQ(result->points(0).y().value(), 32767.0);
}

class GetPowerDistributionTest : public HandlerTest<GetPowerDistributionHandler> {};

TEST_F(GetPowerDistributionTest, ReadsTheWaterfallChannel) {
  host.answer(graphicsPath("exWaterfallData"),
              channel(words16({12345, static_cast<std::uint16_t>(-5), 0, 0})));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/graphics/powerdistribution", "", "", "c");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"points":[{"y":-5,"x":123.45},{"y":0,"x":0}]})");
  EXPECT_EQ(host.onlyAction().path, "/system/graphics/exWaterfallData");
  EXPECT_FALSE(
      host.onlyAction().resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(GetPowerDistributionTest, ABlockOfSixBytesIsAnEmptySuccess) {
  host.answer(graphicsPath("exWaterfallData"), channel(Bytes(6, 9)));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/graphics/powerdistribution", "", "", "c");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
}

}  // namespace
}  // namespace halvor::kelo::test
