#include "kelo/handlers/http/graphics/AudioModVectorsHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::AudioVector> AudioModVectorsHelperClass::getAudioVector(
    const std::vector<std::uint8_t>& block, unsigned char offset) {
  return GraphicsDecoders::audioVector(block, offset);
}

std::shared_ptr<protobuf::ModulationVector> AudioModVectorsHelperClass::getModulationVector(
    const std::vector<std::uint8_t>& block, unsigned char offset) {
  return GraphicsDecoders::modulationVector(block, offset);
}

std::shared_ptr<protobuf::AudioModVectors> AudioModVectorsHelperClass::getAudioModVectors(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, bool byPassSessionActivityTimerUpdate) {
  const tavelabi::Resource answer = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exAudioModVector", byPassSessionActivityTimerUpdate);
  // The header is taken before the record, so a missing "header" is the error reported.
  const std::vector<std::uint8_t> header = GraphicsChannelHelpers::copyBlock(answer, "header");
  const std::vector<std::uint8_t> record = GraphicsChannelHelpers::copyBlock(answer, "value");
  return GraphicsDecoders::audioModVectors(header, record);
}

}  // namespace halvor::kelo
