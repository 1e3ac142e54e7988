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

// The AM-to-PM correction curve, from the "exAmPmAmplitude" channel.
class AmPmCorrectionHelperClass {
 public:
  AmPmCorrectionHelperClass() = delete;

  // y of a word: the word divided by 2 to the power of 32 over 360, so that a full 32-bit word
  // maps onto 360 degrees.
  static constexpr double kWordsPerDegree = 11930464.711111112;

  static std::shared_ptr<protobuf::AmPmCorrection> getAmPmCorrection(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);

  // Entries of 4 bytes, each an unsigned 32-bit word: the entry of index i (from 0) gives x = i
  // and y = the word in degrees (2 to the power of 32 is 360). An entry cut off by the block's end
  // throws std::out_of_range.
  static std::shared_ptr<protobuf::AmPmCorrection> decode(const std::vector<std::uint8_t>& block);
};

}  // namespace halvor::kelo
