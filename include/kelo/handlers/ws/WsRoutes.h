#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The WebSocket endpoints of the push family, each at "/1" + its path, GET only.
class WsRoutes {
 public:
  static void registerWsRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
