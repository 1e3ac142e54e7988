#include "kelo/handlers/http/events/EventRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/events/DeleteEvent.h"
#include "kelo/handlers/http/events/GenerateCsvHandler.h"
#include "kelo/handlers/http/events/GetEventLogsHandler.h"

namespace halvor::kelo {

void EventRoutes::registerEventRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetEventLogsHandler, DeleteEvent, GenerateCsvHandler>(application);
}

}  // namespace halvor::kelo
