#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/resource": reads the resource at the query's path and answers it as JSON.
class GetResourceHandler : public web::KeloHttpController<GetResourceHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_PATH("/api/resource", web::Get)
  KELO_ROUTES_END

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
