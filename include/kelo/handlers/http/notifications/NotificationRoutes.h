#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of notifications and the mail server.
class NotificationRoutes {
 public:
  NotificationRoutes() = delete;

  // "/1/api/notifications" GET and POST, "/1/api/notifications/{guid}" GET, PUT and DELETE,
  // "/1/api/email_server_settings" GET and PUT.
  static void registerNotificationRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
