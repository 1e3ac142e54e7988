#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/notifications/{guid}": one notification with its alarms read live.
class GetNotificationHandler : public web::HttpController<GetNotificationHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getNotification, "/api/notifications/{guid}", web::Get)
  KELO_ROUTES_END

  virtual void getNotification(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
