#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/changePassword": a password change from the ChangePassword JSON of the body;
// the reply shows the user whose password changed.
class PostChangeUserPassword : public web::KeloHttpController<PostChangeUserPassword, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/changePassword", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
