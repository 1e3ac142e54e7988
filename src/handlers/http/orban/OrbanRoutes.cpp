#include "kelo/handlers/http/orban/OrbanRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/orban/DeleteOrbanPreset.h"
#include "kelo/handlers/http/orban/GetOrbanActivePreset.h"
#include "kelo/handlers/http/orban/GetOrbanPresetList.h"
#include "kelo/handlers/http/orban/PostOrbanPreset.h"
#include "kelo/handlers/http/orban/PutOrbanActivePreset.h"
#include "kelo/handlers/http/orban/PutOrbanPreset.h"
#include "kelo/handlers/http/orban/PutOrbanPresetControl.h"

namespace halvor::kelo {

void OrbanRoutes::registerOrbanRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetOrbanPresetList, GetOrbanActivePreset, PutOrbanActivePreset, PostOrbanPreset,
                    PutOrbanPreset, DeleteOrbanPreset, PutOrbanPresetControl>(application);
}

}  // namespace halvor::kelo
