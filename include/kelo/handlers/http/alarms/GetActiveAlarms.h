#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/alarms/active": the alarms that "/system/alarms/active" lists, in its order. Members
// at their default are printed too.
class GetActiveAlarms : public web::KeloHttpController<GetActiveAlarms, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/alarms/active", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
