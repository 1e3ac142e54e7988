#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/graphics/GetLissajousHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/LissajousHelperClass.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;

Bytes headerWith(std::size_t length, std::uint16_t word) {
  Bytes header(length, 0xEE);
  if (length >= 14) {
    header[12] = static_cast<std::uint8_t>(word & 0xFFU);
    header[13] = static_cast<std::uint8_t>(word >> 8U);
  }
  return header;
}

protobuf::Lissajous decodedHeader(const Bytes& header) {
  protobuf::Lissajous result;
  GraphicsDecoders::readLissajousHeader(header, result);
  return result;
}

TEST(LissajousHeaderTest, FourteenBytesSetTheWordAtTwelve) {
  const protobuf::Lissajous result = decodedHeader(headerWith(14, 512));
  ASSERT_TRUE(result.has_headervalue());
  EXPECT_EQ(result.headervalue().value(), 512);
}

TEST(LissajousHeaderTest, AWordOf65535StaysPositive) {
  EXPECT_EQ(decodedHeader(headerWith(20, 65535)).headervalue().value(), 65535);
}

TEST(LissajousHeaderTest, ThirteenBytesOrFewerLeaveItUnset) {
  for (std::size_t length : {13u, 12u, 11u, 0u}) {
    EXPECT_FALSE(decodedHeader(Bytes(length, 0xFF)).has_headervalue()) << length;
  }
}

class GetLissajousTest : public HandlerTest<GetLissajousHandler> {
 protected:
  void answer(const Bytes& header, const Bytes& value) {
    Resource answer = channel(value);
    answer.values["header"] = byteArray(header);
    host.answer(graphicsPath("exLissajousData"), answer);
  }
  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/graphics/lissajous", "", "", "c");
  }
};

TEST_F(GetLissajousTest, AShortHeaderStillGivesThePoints) {
  answer(Bytes(13, 1), words32({16777216U, 8388608U}));
  EXPECT_EQ(get()->body(), R"({"points":[{"y":0.5,"x":1}]})");
}

TEST_F(GetLissajousTest, PointsThenTheHeaderValue) {
  answer(headerWith(14, 65535), words32({0, 0}));
  EXPECT_EQ(get()->body(), R"({"points":[{"y":0,"x":0}],"headerValue":65535})");
  EXPECT_FALSE(
      host.onlyAction().resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(GetLissajousTest, AMissingHeaderIsMapAt) {
  host.answer(graphicsPath("exLissajousData"), channel({}));
  EXPECT_THROW(get(), std::out_of_range);
}

TEST_F(GetLissajousTest, ACutOffPointThrows) {
  answer(headerWith(14, 1), Bytes(12, 0));
  EXPECT_THROW(get(), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo::test

namespace halvor::kelo::test {
namespace {

TEST_F(GetLissajousTest, AnEmptyValueBlockIsAnEmptySuccess) {
  answer({}, {});
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
}

}  // namespace
}  // namespace halvor::kelo::test
