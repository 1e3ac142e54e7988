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

// The AM-to-AM correction curve, from the "exAmAmAmplitude" channel.
class AmAmCorrectionHelperClass {
 public:
  AmAmCorrectionHelperClass() = delete;

  // y of a word: the word times 2 to the power of -27.
  static constexpr double kScale = 7.450580596923828e-09;

  static std::shared_ptr<protobuf::AmAmCorrection> getAmAmCorrection(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);

  // Entries of 4 bytes, each an unsigned 32-bit word: the entry of index i (from 0) gives x = i
  // and y = the word times 2 to the power of -27. An entry cut off by the block's end throws
  // std::out_of_range.
  static std::shared_ptr<protobuf::AmAmCorrection> decode(const std::vector<std::uint8_t>& block);
};

}  // namespace halvor::kelo
