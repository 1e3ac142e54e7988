#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/notifications": a new notification from a Notification body: created with its title,
// then each alarm (by its path) and each address added, in order.
class PostNotificationHandler : public web::KeloHttpController<PostNotificationHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/notifications", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
