#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of users and roles.
class UserRoutes {
 public:
  UserRoutes() = delete;

  // "/1/api/roles" GET, "/1/api/users" GET and POST, "/1/api/users/{username}" GET, PUT and
  // DELETE, "/1/api/changePassword" POST.
  static void registerUserRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
