#include "kelo/handlers/http/metrics/MetricsRoutes.h"

#include "kelo/handlers/http/metrics/GetMetricsHandler.h"

namespace halvor::kelo {

void MetricsRoutes::registerMetricsRoutes(web::HttpAppFramework& application) {
  application.registerHandler(GetMetricsHandler::kPath, &GetMetricsHandler::handle, {web::Get},
                              "GetMetricsHandler");
}

}  // namespace halvor::kelo
