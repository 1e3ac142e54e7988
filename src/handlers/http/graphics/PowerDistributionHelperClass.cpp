#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::PowerDistribution> PowerDistributionHelperClass::getPowerDistribution(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  // The curve comes from the waterfall channel, not from the measurement channel of the same
  // name: that pairing is the one the front end expects.
  return GraphicsDecoders::powerDistribution(GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exWaterfallData",
                                          byPassSessionActivityTimerUpdate),
      "value"));
}

PointColumns PowerDistributionHelperClass::readPowerDistribution(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    const std::string& sessionId, bool byPassSessionActivityTimerUpdate) {
  PointColumns points;
  GraphicsDecoders::decodePowerDistribution(
      GraphicsChannelHelpers::copyBlock(
          GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                              "exWaterfallData", byPassSessionActivityTimerUpdate),
          "value"),
      points);
  return points;
}

}  // namespace halvor::kelo
