#include "kelo/handlers/http/graphics/AmPmCorrectionHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::AmPmCorrection> AmPmCorrectionHelperClass::getAmPmCorrection(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  return GraphicsDecoders::amPmCorrection(GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exAmPmAmplitude",
                                          byPassSessionActivityTimerUpdate),
      "value"));
}

PointColumns AmPmCorrectionHelperClass::readAmPmCorrection(const web::HttpRequestPtr& request,
                                                           tavelabi::ITavel* tavel,
                                                           tavelabi::IPluginInfo* pluginInfo,
                                                           const std::string& sessionId,
                                                           bool byPassSessionActivityTimerUpdate) {
  PointColumns points;
  GraphicsDecoders::decodeAmPmCorrection(
      GraphicsChannelHelpers::copyBlock(
          GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                              "exAmPmAmplitude", byPassSessionActivityTimerUpdate),
          "value"),
      points);
  return points;
}

}  // namespace halvor::kelo
