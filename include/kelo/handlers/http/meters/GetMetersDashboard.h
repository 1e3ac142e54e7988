#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/meters/dashboard/available": every collection the host lists under "/meters/**/list",
// each with its groups and meters as they read now.
class GetMetersDashboard : public web::KeloHttpController<GetMetersDashboard, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/meters/dashboard/available", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
