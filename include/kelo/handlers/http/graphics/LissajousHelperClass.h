#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"
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
  // The same read, the points left as numbers, what the routes write their replies from; the
  // header's value (where the header holds one) goes into `rest`, the message without its points.
  static PointColumns readLissajous(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                    tavelabi::IPluginInfo* pluginInfo, const std::string& sessionId,
                                    bool byPassSessionActivityTimerUpdate,
                                    protobuf::Lissajous& rest);
};

}  // namespace halvor::kelo
