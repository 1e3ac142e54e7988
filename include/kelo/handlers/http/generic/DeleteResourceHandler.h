#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/command": deletes the resource at the query's path; only the status
// answers. Deletion lives under the command URL, not under "/1/api/resource".
class DeleteResourceHandler : public web::KeloHttpController<DeleteResourceHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/command", web::Delete)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
