#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the meters.
class MeterRoutes {
 public:
  MeterRoutes() = delete;

  // "/1/api/meters/collections/links", "/1/api/meters/collections" and
  // "/1/api/meters/dashboard/available", all GET.
  static void registerMeterRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
