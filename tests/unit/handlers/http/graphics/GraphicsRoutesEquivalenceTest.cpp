// The routes of the graphs of many points write their replies from the decoded numbers; each
// reply is held here to protobuf's own printer of the message that the reference decoders
// (ReferenceDecoders) make of the same blocks, on random blocks of several sizes.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/graphics/GetAmAmCorrectionHandler.h"
#include "kelo/handlers/http/graphics/GetAmPmCorrectionHandler.h"
#include "kelo/handlers/http/graphics/GetConstellationHandler.h"
#include "kelo/handlers/http/graphics/GetLissajousHandler.h"
#include "kelo/handlers/http/graphics/GetPowerDistributionHandler.h"
#include "support/HandlerTest.h"
#include "support/RecordingHost.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"
#include "unit/handlers/http/graphics/ReferenceDecoders.h"

namespace halvor::kelo::test {
namespace {

Bytes randomBlock(std::mt19937& random, std::size_t size) {
  std::uniform_int_distribution<int> byte(0, 255);
  Bytes block(size);
  for (std::uint8_t& b : block) b = static_cast<std::uint8_t>(byte(random));
  return block;
}

// Whole entries of 4 and 8 bytes: none, one, a few, thousands.
constexpr std::size_t kSizes[] = {0, 8, 16, 24, 800, 65536};

class ConstellationRouteTest : public HandlerTest<GetConstellationHandler> {};

TEST_F(ConstellationRouteTest, TheReplyIsProtobufsTextOfTheReferenceMessage) {
  std::mt19937 random(1);
  for (const std::size_t size : kSizes) {
    const Bytes block = randomBlock(random, size);
    host.answer(graphicsPath("exConstellationData"), channel(block));
    protobuf::Constellation reference;
    ReferenceDecoders::appendFixedPointPairs(block, *reference.mutable_points());
    EXPECT_EQ(call(host, web::Get, "/1/api/graphics/constellation", "", "", "c")->body(),
              JsonOptions::protobufJson(reference))
        << size << " bytes";
  }
}

class LissajousRouteTest : public HandlerTest<GetLissajousHandler> {};

TEST_F(LissajousRouteTest, TheReplyIsProtobufsTextOfTheReferenceMessage) {
  std::mt19937 random(2);
  for (const std::size_t size : kSizes) {
    for (const std::size_t headerSize : {13U, 14U}) {
      const Bytes block = randomBlock(random, size);
      const Bytes header = randomBlock(random, headerSize);
      tavelabi::Resource answer = channel(block);
      answer.values["header"] = byteArray(header);
      host.answer(graphicsPath("exLissajousData"), answer);
      protobuf::Lissajous reference;
      ReferenceDecoders::readLissajousHeader(header, reference);
      ReferenceDecoders::appendFixedPointPairs(block, *reference.mutable_points());
      EXPECT_EQ(call(host, web::Get, "/1/api/graphics/lissajous", "", "", "c")->body(),
                JsonOptions::protobufJson(reference))
          << size << " and " << headerSize << " bytes";
    }
  }
}

class PowerDistributionRouteTest : public HandlerTest<GetPowerDistributionHandler> {};

TEST_F(PowerDistributionRouteTest, TheReplyIsProtobufsTextOfTheReferenceMessage) {
  std::mt19937 random(3);
  for (const std::size_t size : {0U, 4U, 6U, 400U, 65536U}) {
    const Bytes block = randomBlock(random, size);
    host.answer(graphicsPath("exWaterfallData"), channel(block));
    EXPECT_EQ(call(host, web::Get, "/1/api/graphics/powerdistribution", "", "", "c")->body(),
              JsonOptions::protobufJson(*ReferenceDecoders::powerDistribution(block)))
        << size << " bytes";
  }
}

class AmAmCorrectionRouteTest : public HandlerTest<GetAmAmCorrectionHandler> {};

TEST_F(AmAmCorrectionRouteTest, TheReplyIsProtobufsTextOfTheReferenceMessage) {
  std::mt19937 random(4);
  for (const std::size_t size : kSizes) {
    const Bytes block = randomBlock(random, size);
    host.answer(graphicsPath("exAmAmAmplitude"), channel(block));
    EXPECT_EQ(call(host, web::Get, "/1/api/graphics/amamcorrection", "", "", "c")->body(),
              JsonOptions::protobufJson(*ReferenceDecoders::amAmCorrection(block)))
        << size << " bytes";
  }
}

class AmPmCorrectionRouteTest : public HandlerTest<GetAmPmCorrectionHandler> {};

TEST_F(AmPmCorrectionRouteTest, TheReplyIsProtobufsTextOfTheReferenceMessage) {
  std::mt19937 random(5);
  for (const std::size_t size : kSizes) {
    const Bytes block = randomBlock(random, size);
    host.answer(graphicsPath("exAmPmAmplitude"), channel(block));
    EXPECT_EQ(call(host, web::Get, "/1/api/graphics/ampmcorrection", "", "", "c")->body(),
              JsonOptions::protobufJson(*ReferenceDecoders::amPmCorrection(block)))
        << size << " bytes";
  }
}

}  // namespace
}  // namespace halvor::kelo::test
