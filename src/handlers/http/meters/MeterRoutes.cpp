#include "kelo/handlers/http/meters/MeterRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/meters/GetMeterCollectionLinks.h"
#include "kelo/handlers/http/meters/GetMeterCollections.h"
#include "kelo/handlers/http/meters/GetMetersDashboard.h"

namespace halvor::kelo {

void MeterRoutes::registerMeterRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetMeterCollectionLinks, GetMeterCollections, GetMetersDashboard>(application);
}

}  // namespace halvor::kelo
