#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the broadcast presets.
class PresetRoutes {
 public:
  PresetRoutes() = delete;

  // "/1/api/presets" GET, "/1/api/presets/layout" GET, "/1/api/presets/active" GET and PUT,
  // "/1/api/presets/{presetId}" GET and DELETE, "/1/api/presets/clone" POST,
  // "/1/api/presets/update" PUT.
  static void registerPresetRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
