#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/meters/collections?path=...": the collection at the decoded path with its groups and
// their meters as they read now.
class GetMeterCollections : public web::KeloHttpController<GetMeterCollections, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/meters/collections", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
