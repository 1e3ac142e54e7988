#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/lodestar": the remote service registration.
class GetLodestarHandler : public web::KeloHttpController<GetLodestarHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/lodestar", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
