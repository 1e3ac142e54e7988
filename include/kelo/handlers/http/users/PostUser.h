#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/users": a new user from the User JSON of the body; the reply shows the user
// that the host named.
class PostUser : public web::KeloHttpController<PostUser, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/users", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
