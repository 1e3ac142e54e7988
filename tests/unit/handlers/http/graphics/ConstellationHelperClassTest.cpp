#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/GetConstellationHandler.h"
#include "kelo/handlers/http/graphics/GetSubCarriersHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

using Points = google::protobuf::RepeatedPtrField<protobuf::Point>;
using Groups = google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>;

Points pairs(const Bytes& block) {
  Points points;
  GraphicsDecoders::appendFixedPointPairs(block, points);
  return points;
}

TEST(ConstellationDecodeTest, WordsHave24FractionBitsXFirst) {
  const Points points = pairs(words32({16777216U, static_cast<std::uint32_t>(-8388608)}));
  ASSERT_EQ(points.size(), 1);
  EXPECT_EQ(points[0].x().value(), 1.0);
  EXPECT_EQ(points[0].y().value(), -0.5);
}

TEST(ConstellationDecodeTest, TheScaleIsTwoToTheMinus24) {
  EXPECT_EQ(GraphicsDecoders::kFixedPoint24, 5.960464477539063e-08);
  const Points points = pairs(words32({1, 0x7FFFFFFF}));
  EXPECT_EQ(points[0].x().value(), 5.960464477539063e-08);
  EXPECT_EQ(points[0].y().value(), 2147483647.0 * 5.960464477539063e-08);
}

TEST(ConstellationDecodeTest, AnEmptyBlockMakesNoPoints) { EXPECT_EQ(pairs({}).size(), 0); }

TEST(ConstellationDecodeTest, ACutOffEntryThrowsAfterTheWholeOnes) {
  Points points;
  Bytes block = words32({0, 16777216U});
  block.insert(block.end(), {1, 2, 3, 4, 5});
  EXPECT_THROW(GraphicsDecoders::appendFixedPointPairs(block, points), std::out_of_range);
  ASSERT_EQ(points.size(), 1);
  EXPECT_EQ(points[0].y().value(), 1.0);
}

Bytes groupEntry(std::int32_t first, std::int32_t second, std::int16_t value, std::int16_t index) {
  Bytes entry = {0xAA, 0xBB};
  put16(entry, 0xCCDD);
  put32(entry, static_cast<std::uint32_t>(first));
  put32(entry, static_cast<std::uint32_t>(second));
  put16(entry, static_cast<std::uint16_t>(value));
  put16(entry, static_cast<std::uint16_t>(index));
  return entry;
}

TEST(SubCarrierDecodeTest, AnEntryIsScaledInFloatArithmetic) {
  Bytes block = groupEntry(22500, -1234567, -2050, 7);
  const Bytes second = groupEntry(1, 16777217, 1, -3);
  block.insert(block.end(), second.begin(), second.end());
  Groups groups;
  GraphicsDecoders::appendSubCarrierGroups(block, groups);
  ASSERT_EQ(groups.size(), 2);
  EXPECT_EQ(groups[0].groupindex().value(), 7);
  EXPECT_EQ(groups[0].groupvalue().value(), -2050.0F / 100.0F);
  EXPECT_EQ(groups[0].firstvalue().value(), 22.5F);
  EXPECT_EQ(groups[0].secondvalue().value(), -1234567.0F / 1000.0F);
  EXPECT_EQ(groups[1].groupindex().value(), -3);
  // 16777217 is not a float: it becomes 16777216 before the division.
  EXPECT_EQ(groups[1].secondvalue().value(), 16777.216F);
  EXPECT_EQ(groups[1].firstvalue().value(), 1.0F / 1000.0F);
}

TEST(SubCarrierDecodeTest, ACutOffEntryThrows) {
  Groups groups;
  EXPECT_THROW(GraphicsDecoders::appendSubCarrierGroups(Bytes(15, 0), groups), std::out_of_range);
  EXPECT_EQ(groups.size(), 0);
}

class GetConstellationTest : public HandlerTest<GetConstellationHandler> {};

TEST_F(GetConstellationTest, ReadsTheChannelOnceAsActivityAndAnswersJson) {
  host.answer(graphicsPath("exConstellationData"),
              channel(words32({16777216U, static_cast<std::uint32_t>(-8388608)})));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/graphics/constellation", "", "", "client");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"points":[{"y":-0.5,"x":1}]})");
  const tavelabi::ResourceAction& read = host.onlyAction();
  EXPECT_EQ(read.action, tavelabi::CCRUD::Read);
  EXPECT_FALSE(read.resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(GetConstellationTest, AnEmptyBlockIsAnEmptyMessage) {
  host.answer(graphicsPath("exConstellationData"), channel({}));
  EXPECT_EQ(call(host, web::Get, "/1/api/graphics/constellation", "", "", "c")->body(), "{}");
}

TEST_F(GetConstellationTest, AMissingValueIsMapAt) {
  host.answer(graphicsPath("exConstellationData"), tavelabi::Resource());
  EXPECT_THROW(call(host, web::Get, "/1/api/graphics/constellation", "", "", "c"),
               std::out_of_range);
}

class GetSubCarriersTest : public HandlerTest<GetSubCarriersHandler> {};

TEST_F(GetSubCarriersTest, ReadsTheGroupChannelAndAnswersJson) {
  host.answer(graphicsPath("exConstellationGroupData"), channel(groupEntry(22500, 0, -250, 0)));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/graphics/signalConstellation/subCarriers", "", "", "c");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(),
            R"({"groups":[{"groupIndex":0,"groupValue":-2.5,"firstValue":22.5,"secondValue":0}]})");
  EXPECT_FALSE(
      host.onlyAction().resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(GetSubCarriersTest, AnEmptyBlockIsAnEmptyList) {
  host.answer(graphicsPath("exConstellationGroupData"), channel({}));
  EXPECT_EQ(
      call(host, web::Get, "/1/api/graphics/signalConstellation/subCarriers", "", "", "c")->body(),
      "{}");
}

}  // namespace
}  // namespace halvor::kelo::test
