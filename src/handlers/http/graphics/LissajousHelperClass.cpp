#include "kelo/handlers/http/graphics/LissajousHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

void LissajousHelperClass::getLissajous(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                                        protobuf::Lissajous& result,
                                        bool byPassSessionActivityTimerUpdate) {
  const tavelabi::Resource answer = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exLissajousData", byPassSessionActivityTimerUpdate);
  GraphicsDecoders::readLissajousHeader(GraphicsChannelHelpers::copyBlock(answer, "header"),
                                        result);
  const std::vector<std::uint8_t> block = GraphicsChannelHelpers::copyBlock(answer, "value");
  GraphicsDecoders::appendFixedPointPairs(block, *result.mutable_points());
}

PointColumns LissajousHelperClass::readLissajous(const web::HttpRequestPtr& request,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* pluginInfo,
                                                 const std::string& sessionId,
                                                 bool byPassSessionActivityTimerUpdate,
                                                 protobuf::Lissajous& rest) {
  const tavelabi::Resource answer = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exLissajousData", byPassSessionActivityTimerUpdate);
  GraphicsDecoders::readLissajousHeader(GraphicsChannelHelpers::copyBlock(answer, "header"), rest);
  PointColumns points;
  GraphicsDecoders::decodeFixedPointPairs(GraphicsChannelHelpers::copyBlock(answer, "value"),
                                          points);
  return points;
}

}  // namespace halvor::kelo
