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

// The power distribution curve, read from the "exWaterfallData" channel.
class PowerDistributionHelperClass {
 public:
  PowerDistributionHelperClass() = delete;

  static std::shared_ptr<protobuf::PowerDistribution> getPowerDistribution(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);

  // Entries of 4 bytes: x an unsigned 16-bit word in hundredths, y a signed 16-bit word as it
  // is. Unlike every other graph, a block that is not a whole number of entries makes no point
  // at all: the result is then valid and empty.
  static std::shared_ptr<protobuf::PowerDistribution> decode(
      const std::vector<std::uint8_t>& block);
};

}  // namespace halvor::kelo
