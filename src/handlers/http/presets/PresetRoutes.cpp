#include "kelo/handlers/http/presets/PresetRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/presets/DeletePreset.h"
#include "kelo/handlers/http/presets/GetActivePreset.h"
#include "kelo/handlers/http/presets/GetPreset.h"
#include "kelo/handlers/http/presets/GetPresetLayout.h"
#include "kelo/handlers/http/presets/GetPresetList.h"
#include "kelo/handlers/http/presets/PostPreset.h"
#include "kelo/handlers/http/presets/PutActivePreset.h"
#include "kelo/handlers/http/presets/PutPreset.h"

namespace halvor::kelo {

void PresetRoutes::registerPresetRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetPresetList, GetPresetLayout, GetActivePreset, PutActivePreset, GetPreset,
                    PostPreset, PutPreset, DeletePreset>(application);
}

}  // namespace halvor::kelo
