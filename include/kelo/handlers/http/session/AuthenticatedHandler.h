#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/authenticated": the session's user (200); for a dead session an auto login
// (201 with a new cookie) or 440 with the session failure's text.
class AuthenticatedHandler : public web::KeloHttpController<AuthenticatedHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/authenticated", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
