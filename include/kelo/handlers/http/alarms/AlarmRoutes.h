#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The REST routes of the transmitter's alarms.
class AlarmRoutes {
 public:
  AlarmRoutes() = delete;

  // "/1/api/alarms", "/1/api/alarms/active" and "/1/api/alarms/alarm", all GET.
  static void registerAlarmRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
