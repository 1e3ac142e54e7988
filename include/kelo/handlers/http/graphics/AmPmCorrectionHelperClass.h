#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The AM-to-PM correction curve, from the "exAmPmAmplitude" channel.
class AmPmCorrectionHelperClass {
 public:
  AmPmCorrectionHelperClass() = delete;

  static std::shared_ptr<protobuf::AmPmCorrection> getAmPmCorrection(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);
  // The same read, the points left as numbers: what the routes write their replies from.
  static PointColumns readAmPmCorrection(const web::HttpRequestPtr& request,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
                                         const std::string& sessionId,
                                         bool byPassSessionActivityTimerUpdate);
};

}  // namespace halvor::kelo
