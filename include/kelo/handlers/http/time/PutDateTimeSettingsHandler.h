#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/time_settings/date_and_time": sets the clock. The Timestamp is written to the host
// as a local time of the process's own zone; the answer is the process's clock after the write.
class PutDateTimeSettingsHandler
    : public web::KeloHttpController<PutDateTimeSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/time_settings/date_and_time", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
