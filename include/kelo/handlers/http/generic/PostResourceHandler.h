#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/resource": creates the body's resource at the query's path and answers the
// host's answer as JSON.
class PostResourceHandler : public web::KeloHttpController<PostResourceHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/resource", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
