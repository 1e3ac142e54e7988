#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The REST routes of the signal graphics, each a GET under "/1/api/graphics/".
class GraphicsRoutes {
 public:
  GraphicsRoutes() = delete;

  static void registerGraphicsRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
