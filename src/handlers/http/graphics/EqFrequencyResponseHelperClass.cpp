#include "kelo/handlers/http/graphics/EqFrequencyResponseHelperClass.h"

#include "halvor/factories/GraphicsFactories.h"
#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

void EqFrequencyResponseHelperClass::appendResponses(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue>& responses) {
  qvector::ByteVectorReader reader(block);
  responses.Reserve(responses.size() + static_cast<int>(block.size() / 2));
  while (reader.remainingBytes() >= 1) {
    responses.Add()->set_value(reader.readSint16() / 100.0);
  }
}

void EqFrequencyResponseHelperClass::appendFrequencies(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<google::protobuf::Int32Value>& frequencies) {
  qvector::ByteVectorReader reader(block);
  frequencies.Reserve(frequencies.size() + static_cast<int>(block.size() / 4));
  while (reader.remainingBytes() >= 1) {
    frequencies.Add()->set_value(reader.readSint32());
  }
}

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
  appendResponses(responses, *factory.overrides().mutable_responses());
  const std::vector<std::uint8_t> frequencies = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId, "exLmsFreqVector",
                                          flag),
      "value");
  appendFrequencies(frequencies, *factory.overrides().mutable_frequencies());
  return factory.release(nullptr);
}

}  // namespace halvor::kelo
