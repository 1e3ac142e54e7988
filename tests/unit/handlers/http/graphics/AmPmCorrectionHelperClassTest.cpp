#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/graphics/AmPmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/GetAmPmCorrectionHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

TEST(AmPmCorrectionDecodeTest, AWordOfTwoToThe31IsHalfACircle) {
  const auto result = GraphicsDecoders::amPmCorrection(words32({2147483648U, 0, 4294967295U}));
  ASSERT_EQ(result->points_size(), 3);
  EXPECT_EQ(result->points(0).y().value(), 180.0);
  EXPECT_EQ(result->points(1).y().value(), 0.0);
  EXPECT_EQ(result->points(2).y().value(), 4294967295.0 / 11930464.711111112);
  EXPECT_EQ(result->points(2).x().value(), 2.0);
}

class GetAmPmCorrectionTest : public HandlerTest<GetAmPmCorrectionHandler> {};

TEST_F(GetAmPmCorrectionTest, ThePointsAsJson) {
  host.answer(graphicsPath("exAmPmAmplitude"), channel(words32({2147483648U})));
  EXPECT_EQ(call(host, web::Get, "/1/api/graphics/ampmcorrection", "", "", "c")->body(),
            R"({"points":[{"y":180,"x":0}]})");
  EXPECT_EQ(host.onlyAction().path, "/system/graphics/exAmPmAmplitude");
}

}  // namespace
}  // namespace halvor::kelo::test
