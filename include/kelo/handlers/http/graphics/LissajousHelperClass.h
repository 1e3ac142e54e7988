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
};

}  // namespace halvor::kelo
