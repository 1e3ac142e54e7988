#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/notifications": every notification of "/notifications/list", in key order, each with
// its alarms read live.
class GetNotificationListHandler
    : public web::KeloHttpController<GetNotificationListHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/notifications", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
