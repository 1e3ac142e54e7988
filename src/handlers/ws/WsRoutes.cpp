#include "kelo/handlers/ws/WsRoutes.h"

#include "kelo/handlers/ws/WsHeartbeat.h"
#include "kelo/handlers/ws/WsResource.h"

namespace halvor::kelo {

void WsRoutes::registerWsRoutes(web::HttpAppFramework& application) {
  WsHeartbeat::registerController(application, WsHeartbeat::kPath);
  WsResource::registerController(application, WsResource::kPath);
}

}  // namespace halvor::kelo
