#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/notifications/{guid}": deletes one notification; 200 without a body.
class DeleteNotificationHandler : public web::HttpController<DeleteNotificationHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deleteNotification, "/api/notifications/{guid}", web::Delete)
  KELO_ROUTES_END

  virtual void deleteNotification(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
