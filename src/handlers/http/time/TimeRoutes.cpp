#include "kelo/handlers/http/time/TimeRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/time/GetTimeSettingsHandler.h"
#include "kelo/handlers/http/time/GetTimeZoneMapHandler.h"
#include "kelo/handlers/http/time/PutDateTimeSettingsHandler.h"
#include "kelo/handlers/http/time/PutNtpSettingsHandler.h"
#include "kelo/handlers/http/time/PutTimezoneSettingsHandler.h"

namespace halvor::kelo {

void TimeRoutes::registerTimeRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetTimeSettingsHandler, GetTimeZoneMapHandler, PutDateTimeSettingsHandler,
                    PutNtpSettingsHandler, PutTimezoneSettingsHandler>(application);
}

}  // namespace halvor::kelo
