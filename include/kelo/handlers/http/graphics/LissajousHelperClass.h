#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The Lissajous figure of the stereo audio.
class LissajousHelperClass {
 public:
  LissajousHelperClass() = delete;

  // "exLissajousData" read once: its "header" decoded first, then its "value" points (the
  // constellation's layout, ConstellationHelperClass::appendFixedPointPairs).
  static void getLissajous(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                           tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                           protobuf::Lissajous& result, bool byPassSessionActivityTimerUpdate);

  // Bytes 0 to 11 of the header are passed over; the unsigned 16-bit word at 12 is the header
  // value. A header too short to hold that word leaves it unset and is no error.
  static void readHeader(const std::vector<std::uint8_t>& header, protobuf::Lissajous& result);
};

}  // namespace halvor::kelo
