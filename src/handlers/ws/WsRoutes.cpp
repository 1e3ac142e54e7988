#include "kelo/handlers/ws/WsRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/ws/WsActiveAlarms.h"
#include "kelo/handlers/ws/WsAmAmCorrection.h"
#include "kelo/handlers/ws/WsAmPmCorrection.h"
#include "kelo/handlers/ws/WsAudioModVectors.h"
#include "kelo/handlers/ws/WsEqFrequencyResponse.h"
#include "kelo/handlers/ws/WsGetActivePreset.h"
#include "kelo/handlers/ws/WsGetConstellation.h"
#include "kelo/handlers/ws/WsGetFrequencyTrace.h"
#include "kelo/handlers/ws/WsGetLissajous.h"
#include "kelo/handlers/ws/WsGetOrbanActivePreset.h"
#include "kelo/handlers/ws/WsGetPresetHardwareErrors.h"
#include "kelo/handlers/ws/WsGetPresetLayout.h"
#include "kelo/handlers/ws/WsGetPresetSummaryList.h"
#include "kelo/handlers/ws/WsGetSetting.h"
#include "kelo/handlers/ws/WsGetSubCarriers.h"
#include "kelo/handlers/ws/WsHeartbeat.h"
#include "kelo/handlers/ws/WsMeterGroup.h"
#include "kelo/handlers/ws/WsPowerDistribution.h"
#include "kelo/handlers/ws/WsPresetScheduleList.h"
#include "kelo/handlers/ws/WsResource.h"

namespace halvor::kelo {

void WsRoutes::registerWsRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<WsHeartbeat, WsResource, WsActiveAlarms, WsMeterGroup>(application);
  // The signal graphics.
  FamilyRoutes::add<WsGetSpectrum, WsGetConstellation, WsGetSubCarriers, WsGetLissajous,
                    WsPowerDistribution, WsAmAmCorrection, WsAmPmCorrection, WsEqFrequencyResponse,
                    WsAudioModVectors>(application);
  // The settings pages.
  FamilyRoutes::add<WsGetSetting>(application);
  // The audio processor's active preset.
  FamilyRoutes::add<WsGetOrbanActivePreset>(application);
  // The broadcast presets.
  FamilyRoutes::add<WsGetActivePreset, WsGetPresetLayout, WsGetPresetSummaryList,
                    WsGetPresetHardwareErrors>(application);
  // The preset schedule.
  FamilyRoutes::add<WsPresetScheduleList>(application);
}

}  // namespace halvor::kelo
