#include "kelo/handlers/http/graphics/GraphicsRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/graphics/GetAmAmCorrectionHandler.h"
#include "kelo/handlers/http/graphics/GetAmPmCorrectionHandler.h"
#include "kelo/handlers/http/graphics/GetAudioModVectorsHandler.h"
#include "kelo/handlers/http/graphics/GetConstellationHandler.h"
#include "kelo/handlers/http/graphics/GetEqFrequencyResponseHandler.h"
#include "kelo/handlers/http/graphics/GetFrequencyTraceHandler.h"
#include "kelo/handlers/http/graphics/GetLissajousHandler.h"
#include "kelo/handlers/http/graphics/GetPowerDistributionHandler.h"
#include "kelo/handlers/http/graphics/GetSubCarriersHandler.h"

namespace halvor::kelo {

void GraphicsRoutes::registerGraphicsRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetSpectrumHandler, GetConstellationHandler, GetSubCarriersHandler,
                    GetLissajousHandler, GetPowerDistributionHandler, GetAmAmCorrectionHandler,
                    GetAmPmCorrectionHandler, GetEqFrequencyResponseHandler,
                    GetAudioModVectorsHandler>(application);
}

}  // namespace halvor::kelo
