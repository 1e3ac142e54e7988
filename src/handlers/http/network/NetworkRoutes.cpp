#include "kelo/handlers/http/network/NetworkRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/network/GetNetworkHandler.h"
#include "kelo/handlers/http/network/GetQcoreHandler.h"
#include "kelo/handlers/http/network/PutNetworkHandler.h"
#include "kelo/handlers/http/network/PutQcoreHandler.h"

namespace halvor::kelo {

void NetworkRoutes::registerNetworkRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetNetworkHandler, PutNetworkHandler, GetQcoreHandler, PutQcoreHandler>(
      application);
}

}  // namespace halvor::kelo
