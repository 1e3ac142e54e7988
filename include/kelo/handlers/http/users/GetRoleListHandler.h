#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/roles": every role of the host.
class GetRoleListHandler : public web::KeloHttpController<GetRoleListHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/roles", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
