#include "kelo/handlers/http/alarms/AlarmRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/alarms/GetActiveAlarms.h"
#include "kelo/handlers/http/alarms/GetAlarm.h"
#include "kelo/handlers/http/alarms/GetAllAlarms.h"

namespace halvor::kelo {

void AlarmRoutes::registerAlarmRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetAllAlarms, GetActiveAlarms, GetAlarm>(application);
}

}  // namespace halvor::kelo
