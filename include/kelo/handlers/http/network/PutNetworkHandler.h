#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/network_settings": writes the controller's network key by key as "set_value"; a
// field the body lacks is written at its default. A failure leaves the earlier writes in place.
class PutNetworkHandler : public web::KeloHttpController<PutNetworkHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/network_settings", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
