#include "kelo/handlers/http/session/SessionRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/session/AuthenticatedHandler.h"
#include "kelo/handlers/http/session/LoginHandler.h"
#include "kelo/handlers/http/session/PostLogout.h"

namespace halvor::kelo {

void SessionRoutes::registerSessionRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<LoginHandler, AuthenticatedHandler, PostLogout>(application);
}

}  // namespace halvor::kelo
