#include "kelo/handlers/http/versions/VersionRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/versions/GetLodestarHandler.h"
#include "kelo/handlers/http/versions/GetSkyRunRemoteSupportHandler.h"
#include "kelo/handlers/http/versions/GetSkyrunVersionHandler.h"
#include "kelo/handlers/http/versions/GetVersionHandler.h"
#include "kelo/handlers/http/versions/GetVersionListHandler.h"
#include "kelo/handlers/http/versions/PutLodestarHandler.h"
#include "kelo/handlers/http/versions/PutSkyRunRemoteSupportHandler.h"

namespace halvor::kelo {

void VersionRoutes::registerVersionRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetVersionListHandler, GetVersionHandler, GetSkyrunVersionHandler,
                    GetLodestarHandler, PutLodestarHandler, GetSkyRunRemoteSupportHandler,
                    PutSkyRunRemoteSupportHandler>(application);
}

}  // namespace halvor::kelo
