#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/time_settings": NTP, the time zone and the process's clock.
class GetTimeSettingsHandler : public web::KeloHttpController<GetTimeSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/time_settings", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
