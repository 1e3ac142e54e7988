#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/logout": ends the session in the host; no body.
class PostLogout : public web::KeloHttpController<PostLogout, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/logout", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
