#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/time_settings/timezone": sets the time zone by its name.
class PutTimezoneSettingsHandler
    : public web::KeloHttpController<PutTimezoneSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/time_settings/timezone", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
