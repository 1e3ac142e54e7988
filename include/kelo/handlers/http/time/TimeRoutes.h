#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the time settings under "/1/api/time_settings".
class TimeRoutes {
 public:
  TimeRoutes() = delete;

  static void registerTimeRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
