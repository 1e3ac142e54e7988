#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes that make and end sessions.
class SessionRoutes {
 public:
  SessionRoutes() = delete;

  // "/1/api/login" POST, "/1/api/authenticated" GET, "/1/api/logout" POST.
  static void registerSessionRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
