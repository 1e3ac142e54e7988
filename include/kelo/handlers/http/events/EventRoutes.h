#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the event log.
class EventRoutes {
 public:
  EventRoutes() = delete;

  // "/1/api/events/paged" GET, "/1/api/events" DELETE, "/1/api/events/generateCsv" POST.
  static void registerEventRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
