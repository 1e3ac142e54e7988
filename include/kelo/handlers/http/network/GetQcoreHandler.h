#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/qcore_settings": makes the host fetch the platform's network, then reads it.
class GetQcoreHandler : public web::KeloHttpController<GetQcoreHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/qcore_settings", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
