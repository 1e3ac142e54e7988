#include "kelo/handlers/http/schedule/ScheduleRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/schedule/DeleteScheduleHandler.h"
#include "kelo/handlers/http/schedule/GetScheduleHandler.h"
#include "kelo/handlers/http/schedule/GetScheduleRuleHandler.h"
#include "kelo/handlers/http/schedule/PostScheduleHandler.h"
#include "kelo/handlers/http/schedule/PutScheduleHandler.h"

namespace halvor::kelo {

void ScheduleRoutes::registerScheduleRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetScheduleHandler, GetScheduleRuleHandler, PostScheduleHandler,
                    PutScheduleHandler, DeleteScheduleHandler>(application);
}

}  // namespace halvor::kelo
