#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the preset schedule.
class ScheduleRoutes {
 public:
  ScheduleRoutes() = delete;

  // "/1/api/schedules" GET and POST, "/1/api/schedules/day", "/summary" and "/conflicts" GET,
  // "/1/api/schedules/{ruleId}" GET, PUT and DELETE.
  static void registerScheduleRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
