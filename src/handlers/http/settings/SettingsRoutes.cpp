#include "kelo/handlers/http/settings/SettingsRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/settings/GetCollectionLinkSettingsHandler.h"
#include "kelo/handlers/http/settings/GetSettingsCollectionHandler.h"
#include "kelo/handlers/http/settings/PutSettingsHandler.h"

namespace halvor::kelo {

void SettingsRoutes::registerSettingsRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetSettingsCollectionHandler, GetCollectionLinkSettingsHandler,
                    PutSettingsHandler>(application);
}

}  // namespace halvor::kelo
