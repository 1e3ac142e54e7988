#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the audio processor's presets.
class OrbanRoutes {
 public:
  OrbanRoutes() = delete;

  // "/1/api/orban" GET, "/1/api/orban/active" GET and PUT, "/1/api/orban/preset" POST and PUT,
  // "/1/api/orban/preset/{presetName}" DELETE, "/1/api/orban/control" PUT.
  static void registerOrbanRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
