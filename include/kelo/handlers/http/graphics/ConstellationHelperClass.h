#pragma once

#include <google/protobuf/repeated_ptr_field.h>

#include <cstdint>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The signal constellation and its list of sub-carrier groups.
class ConstellationHelperClass {
 public:
  ConstellationHelperClass() = delete;

  // "exConstellationData" read once and decoded into `result`.
  static void getConstellation(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                               tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                               protobuf::Constellation& result,
                               bool byPassSessionActivityTimerUpdate);
  // "exConstellationGroupData" read once and decoded into `result`.
  static void getSubCarriers(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                             tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                             protobuf::SubCarrierGroupList& result,
                             bool byPassSessionActivityTimerUpdate);
  // The same read, the points left as numbers: what the routes write their replies from.
  static PointColumns readConstellation(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* pluginInfo,
                                        const std::string& sessionId,
                                        bool byPassSessionActivityTimerUpdate);
};

}  // namespace halvor::kelo
