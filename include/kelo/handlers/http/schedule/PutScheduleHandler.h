#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/schedules/{ruleId}": replaces the rule by the body's (PresetSchedule JSON) and
// answers, once the hardware has confirmed it, with the whole new schedule.
class PutScheduleHandler : public web::HttpController<PutScheduleHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putScheduleRule, "/api/schedules/{ruleId}", web::Put)
  KELO_ROUTES_END

  virtual void putScheduleRule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, web::ResponseCallback callback,
                               std::string ruleId);
};

}  // namespace halvor::kelo
