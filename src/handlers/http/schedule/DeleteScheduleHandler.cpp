#include "kelo/handlers/http/schedule/DeleteScheduleHandler.h"

#include <utility>

#include "kelo/handlers/http/schedule/ScheduleChange.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteScheduleHandler::deleteScheduleRule(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId,
                                               web::ResponseCallback callback, std::string ruleId) {
  const int number = ScheduleChange::ruleNumber(ruleId);
  ScheduleChange::send(req, tavel, info, sessionId, "/command/scheduler/deleteRule",
                       tavelabi::ResourceValue(number));
  ScheduleChange::confirmInBackground({req, resp, std::move(callback)}, tavel, info, sessionId);
}

}  // namespace halvor::kelo
