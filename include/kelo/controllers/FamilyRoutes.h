#pragma once

#include "kelo/controllers/RouteTable.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// A family's registration function lists its handler classes here, and each class registers
// the routes it declares: FamilyRoutes::add<GetAlarm, GetAlarmList>(application).
class FamilyRoutes {
 public:
  FamilyRoutes() = delete;

  template <class... Handlers>
  static void add(web::HttpAppFramework& application) {
    (addOne<Handlers>(application), ...);
  }

 private:
  template <class Handler>
  static void addOne(web::HttpAppFramework& application) {
    RouteTable<Handler> routes(application);
    Handler::declareRoutes(routes);
  }
};

}  // namespace halvor::kelo
