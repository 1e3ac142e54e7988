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

  static constexpr std::size_t kHeaderBytes = 16;
  static constexpr std::size_t kRecordBytes = 70;
  static constexpr std::size_t kAudioVectorBytes = 6;
  static constexpr std::size_t kModulationVectorBytes = 10;

  static std::shared_ptr<protobuf::AudioModVectors> getAudioModVectors(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);

  // The whole message from the two blocks. A header of fewer than 16 bytes or a record of fewer
  // than 70 throws std::out_of_range before anything is read: the positions are fixed, and a
  // short block must not be read past its end.
  static std::shared_ptr<protobuf::AudioModVectors> decode(const std::vector<std::uint8_t>& header,
                                                           const std::vector<std::uint8_t>& record);

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
