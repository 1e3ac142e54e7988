#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/alarms/alarm": the alarm at the query's "path" (percent-decoded). Members at their
// default are printed too.
class GetAlarm : public web::KeloHttpController<GetAlarm, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/alarms/alarm", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
