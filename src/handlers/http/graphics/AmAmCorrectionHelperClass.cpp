#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::AmAmCorrection> AmAmCorrectionHelperClass::getAmAmCorrection(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  return GraphicsDecoders::amAmCorrection(GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exAmAmAmplitude",
                                          byPassSessionActivityTimerUpdate),
      "value"));
}

PointColumns AmAmCorrectionHelperClass::readAmAmCorrection(const web::HttpRequestPtr& request,
                                                           tavelabi::ITavel* tavel,
                                                           tavelabi::IPluginInfo* pluginInfo,
                                                           const std::string& sessionId,
                                                           bool byPassSessionActivityTimerUpdate) {
  PointColumns points;
  GraphicsDecoders::decodeAmAmCorrection(
      GraphicsChannelHelpers::copyBlock(
          GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                              "exAmAmAmplitude", byPassSessionActivityTimerUpdate),
          "value"),
      points);
  return points;
}

}  // namespace halvor::kelo
