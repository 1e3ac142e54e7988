#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The route of the Prometheus exposition.
class MetricsRoutes {
 public:
  MetricsRoutes() = delete;
  // "/metrics", GET, outside the versioned API.
  static void registerMetricsRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
