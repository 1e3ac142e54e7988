#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"

#include "halvor/factories/GraphicsFactories.h"
#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::AmAmCorrection> AmAmCorrectionHelperClass::decode(
    const std::vector<std::uint8_t>& block) {
  protobuf::HalvorPbFactory2AmAmCorrection factory;
  auto& points = *factory.overrides().mutable_points();
  points.Reserve(static_cast<int>(block.size() / 4));
  qvector::ByteVectorReader reader(block);
  std::uint32_t index = 0;
  while (reader.remainingBytes() >= 1) {
    // Unsigned: the top half of the range stays positive.
    const double word = reader.readUint32();
    protobuf::Point* point = points.Add();
    point->mutable_y()->set_value(word * kScale);
    point->mutable_x()->set_value(static_cast<double>(index));
    ++index;
  }
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::AmAmCorrection> AmAmCorrectionHelperClass::getAmAmCorrection(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  return decode(GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exAmAmAmplitude",
                                          byPassSessionActivityTimerUpdate),
      "value"));
}

}  // namespace halvor::kelo
