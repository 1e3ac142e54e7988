#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/GetAmAmCorrectionHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

TEST(AmAmCorrectionDecodeTest, AWordOfTwoToThe27IsOne) {
  const auto result = GraphicsDecoders::amAmCorrection(words32({134217728U}));
  ASSERT_EQ(result->points_size(), 1);
  EXPECT_EQ(result->points(0).y().value(), 1.0);
  EXPECT_EQ(result->points(0).x().value(), 0.0);
}

TEST(AmAmCorrectionDecodeTest, XCountsTheEntriesFromZero) {
  const auto result = GraphicsDecoders::amAmCorrection(words32({0, 0, 268435456U}));
  ASSERT_EQ(result->points_size(), 3);
  EXPECT_EQ(result->points(2).x().value(), 2.0);
  EXPECT_EQ(result->points(2).y().value(), 2.0);
}

TEST(AmAmCorrectionDecodeTest, WordsAreUnsigned) {
  const auto result = GraphicsDecoders::amAmCorrection(words32({4294967295U}));
  EXPECT_EQ(result->points(0).y().value(), 4294967295.0 * 7.450580596923828e-09);
}

TEST(AmAmCorrectionDecodeTest, AnEmptyBlockMakesNoPoints) {
  EXPECT_EQ(GraphicsDecoders::amAmCorrection({})->points_size(), 0);
}

TEST(AmAmCorrectionDecodeTest, ACutOffWordThrows) {
  EXPECT_THROW(GraphicsDecoders::amAmCorrection(Bytes(6, 0)), std::out_of_range);
}

class GetAmAmCorrectionTest : public HandlerTest<GetAmAmCorrectionHandler> {};

TEST_F(GetAmAmCorrectionTest, AnEmptyBlockIsAnEmptySuccess) {
  host.answer(graphicsPath("exAmAmAmplitude"), channel({}));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/graphics/amamcorrection", "", "", "c");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
}

TEST_F(GetAmAmCorrectionTest, ThePointsAsJson) {
  host.answer(graphicsPath("exAmAmAmplitude"), channel(words32({134217728U, 67108864U})));
  EXPECT_EQ(call(host, web::Get, "/1/api/graphics/amamcorrection", "", "", "c")->body(),
            R"({"points":[{"y":1,"x":0},{"y":0.5,"x":1}]})");
  EXPECT_FALSE(
      host.onlyAction().resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

}  // namespace
}  // namespace halvor::kelo::test
