#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The audio and modulation vectors of "exAudioModVector": a fixed record of nine vectors in
// "value" and the audio sources and input types in "header".
class AudioModVectorsHelperClass {
 public:
  AudioModVectorsHelperClass() = delete;

  static std::shared_ptr<protobuf::AudioModVectors> getAudioModVectors(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);

  // Three unsigned 16-bit words at `offset`, each in hundredths. The 6 bytes are copied out and
  // read on their own; a block too short for them throws std::out_of_range.
  static std::shared_ptr<protobuf::AudioVector> getAudioVector(
      const std::vector<std::uint8_t>& block, unsigned char offset);
  // Five 16-bit words at `offset`, each in hundredths: the first unsigned, the other four
  // signed. Copied and bounded as above.
  static std::shared_ptr<protobuf::ModulationVector> getModulationVector(
      const std::vector<std::uint8_t>& block, unsigned char offset);
};

}  // namespace halvor::kelo
