#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the generic resource and command endpoints.
class GenericRoutes {
 public:
  GenericRoutes() = delete;

  // "/1/api/resource" GET, POST, PUT and "/1/api/command" PUT, DELETE.
  static void registerGenericRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
