#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/time_settings/ntp": switches NTP, then sets its server. The first refused write ends
// the request with 500; a write that passed before it stands.
class PutNtpSettingsHandler : public web::KeloHttpController<PutNtpSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/time_settings/ntp", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
