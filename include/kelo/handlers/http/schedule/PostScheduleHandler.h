#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// POST "/1/api/schedules": adds the body's rule (PresetSchedule JSON) and answers, once the
// hardware has confirmed it, with the whole new schedule.
class PostScheduleHandler : public web::HttpController<PostScheduleHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(postSchedule, "/api/schedules", web::Post)
  KELO_ROUTES_END

  virtual void postSchedule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
