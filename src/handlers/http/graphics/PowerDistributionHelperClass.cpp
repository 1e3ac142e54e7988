#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"

#include "halvor/factories/GraphicsFactories.h"
#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

namespace {

constexpr unsigned long kEntryBytes = 4;

}  // namespace

std::shared_ptr<protobuf::PowerDistribution> PowerDistributionHelperClass::decode(
    const std::vector<std::uint8_t>& block) {
  protobuf::HalvorPbFactory2PowerDistribution factory;
  qvector::ByteVectorReader reader(block);
  // The whole block is tested before the loop: a partial entry spoils the whole curve.
  if (reader.remainingBytes() % kEntryBytes != 0) return factory.release(nullptr);
  auto& points = *factory.overrides().mutable_points();
  points.Reserve(static_cast<int>(block.size() / kEntryBytes));
  while (reader.remainingBytes() >= 1) {
    const double x = reader.readUint16() / 100.0;
    const double y = static_cast<std::int16_t>(reader.readUint16());
    protobuf::Point* point = points.Add();
    point->mutable_y()->set_value(y);
    point->mutable_x()->set_value(x);
  }
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::PowerDistribution> PowerDistributionHelperClass::getPowerDistribution(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  // The curve comes from the waterfall channel, not from the measurement channel of the same
  // name: that pairing is the one the front end expects.
  return decode(GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exWaterfallData",
                                          byPassSessionActivityTimerUpdate),
      "value"));
}

}  // namespace halvor::kelo
