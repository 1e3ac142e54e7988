#include "kelo/handlers/http/graphics/EqFrequencyResponseHelperClass.h"

#include "halvor/factories/GraphicsFactories.h"
#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::EqFrequencyResponse>
EqFrequencyResponseHelperClass::getEqFrequencyResponse(const web::HttpRequestPtr& request,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* pluginInfo,
                                                       std::string sessionId,
                                                       bool byPassSessionActivityTimerUpdate) {
  const bool flag = byPassSessionActivityTimerUpdate;
  protobuf::HalvorPbFactory2EqFrequencyResponse factory;
  // The responses' channel is read first; it is also the one a WebSocket subscribes.
  const std::vector<std::uint8_t> responses = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exLmsFilterFreqDomain", flag),
      "value");
  GraphicsDecoders::appendEqResponses(responses, *factory.overrides().mutable_responses());
  const std::vector<std::uint8_t> frequencies = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exLmsFreqVector",
                                          flag),
      "value");
  GraphicsDecoders::appendEqFrequencies(frequencies, *factory.overrides().mutable_frequencies());
  return factory.release(nullptr);
}

}  // namespace halvor::kelo
