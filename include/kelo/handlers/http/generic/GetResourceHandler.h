#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/resource": reads the resource at the query's path and answers it as JSON.
class GetResourceHandler : public web::KeloHttpController<GetResourceHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/resource", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
