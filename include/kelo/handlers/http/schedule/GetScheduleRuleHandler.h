#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/schedules/{ruleId}": one rule, with its preset's sections as far as the last list
// of rules knew them.
class GetScheduleRuleHandler : public web::HttpController<GetScheduleRuleHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getScheduleRule, "/api/schedules/{ruleId}", web::Get)
  KELO_ROUTES_END

  virtual void getScheduleRule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, std::string ruleId);
};

}  // namespace halvor::kelo
