#include "kelo/handlers/ws/WsRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/ws/WsHeartbeat.h"
#include "kelo/handlers/ws/WsMeterGroup.h"
#include "kelo/handlers/ws/WsResource.h"

namespace halvor::kelo {

void WsRoutes::registerWsRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<WsHeartbeat, WsResource, WsMeterGroup>(application);
}

}  // namespace halvor::kelo
