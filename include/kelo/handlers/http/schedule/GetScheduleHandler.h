#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/schedules" (the rules, which also refreshes the preset names), ".../day?date="
// (a day's activations), ".../summary?startDate=&endDate=" (activation counts of a period) and
// ".../conflicts" (the host's conflicts): one operation that tells them by the path.
class GetScheduleHandler : public web::HttpController<GetScheduleHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getScheduleHandler, "/api/schedules", web::Get)
  KELO_ROUTE(getScheduleHandler, "/api/schedules/day", web::Get)
  KELO_ROUTE(getScheduleHandler, "/api/schedules/summary", web::Get)
  KELO_ROUTE(getScheduleHandler, "/api/schedules/conflicts", web::Get)
  KELO_ROUTES_END

  virtual void getScheduleHandler(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId);
};

}  // namespace halvor::kelo
