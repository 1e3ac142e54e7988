#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/network_settings": the controller's own network, one read per resource.
class GetNetworkHandler : public web::KeloHttpController<GetNetworkHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/network_settings", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
