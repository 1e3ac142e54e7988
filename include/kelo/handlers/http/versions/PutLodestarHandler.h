#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/lodestar": changes the registration with the keys the body sets, and answers it as
// read again.
class PutLodestarHandler : public web::KeloHttpController<PutLodestarHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/lodestar", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
