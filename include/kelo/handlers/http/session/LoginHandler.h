#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/login": a new session logged in with the Login JSON of the body, its identifier
// in the cookie "SessionID". Too many failures from one address answer 429 without a host call.
class LoginHandler : public web::KeloHttpController<LoginHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/login", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
