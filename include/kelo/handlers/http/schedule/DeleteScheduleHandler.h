#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/schedules/{ruleId}": deletes the rule and answers, once the hardware has
// confirmed it, with the whole new schedule. A ruleId that is not a number fails before the
// host is asked.
class DeleteScheduleHandler : public web::HttpController<DeleteScheduleHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(deleteScheduleRule, "/api/schedules/{ruleId}", web::Delete)
  KELO_ROUTES_END

  virtual void deleteScheduleRule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId, web::ResponseCallback callback,
                                  std::string ruleId);
};

}  // namespace halvor::kelo
