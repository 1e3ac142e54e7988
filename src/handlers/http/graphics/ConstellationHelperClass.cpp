#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

void ConstellationHelperClass::getConstellation(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, protobuf::Constellation& result, bool byPassSessionActivityTimerUpdate) {
  const std::vector<std::uint8_t> block = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exConstellationData", byPassSessionActivityTimerUpdate),
      "value");
  GraphicsDecoders::appendFixedPointPairs(block, *result.mutable_points());
}

void ConstellationHelperClass::getSubCarriers(const web::HttpRequestPtr& request,
                                              tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* pluginInfo,
                                              std::string sessionId,
                                              protobuf::SubCarrierGroupList& result,
                                              bool byPassSessionActivityTimerUpdate) {
  const std::vector<std::uint8_t> block = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exConstellationGroupData",
                                          byPassSessionActivityTimerUpdate),
      "value");
  GraphicsDecoders::appendSubCarrierGroups(block, *result.mutable_groups());
}

PointColumns ConstellationHelperClass::readConstellation(const web::HttpRequestPtr& request,
                                                         tavelabi::ITavel* tavel,
                                                         tavelabi::IPluginInfo* pluginInfo,
                                                         const std::string& sessionId,
                                                         bool byPassSessionActivityTimerUpdate) {
  PointColumns points;
  GraphicsDecoders::decodeFixedPointPairs(
      GraphicsChannelHelpers::copyBlock(
          GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                              "exConstellationData",
                                              byPassSessionActivityTimerUpdate),
          "value"),
      points);
  return points;
}

}  // namespace halvor::kelo
