#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/qcore_settings": sends every key of the platform's network in one command, the
// values that only the platform sets (MAC addresses, connection states) as well.
class PutQcoreHandler : public web::KeloHttpController<PutQcoreHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/qcore_settings", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
