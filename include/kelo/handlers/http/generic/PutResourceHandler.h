#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/resource": updates the resource at the query's path with the body's keys and
// answers the host's answer as JSON.
class PutResourceHandler : public web::KeloHttpController<PutResourceHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/resource", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
