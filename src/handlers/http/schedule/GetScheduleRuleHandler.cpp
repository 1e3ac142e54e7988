#include "kelo/handlers/http/schedule/GetScheduleRuleHandler.h"

#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetScheduleRuleHandler::getScheduleRule(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId,
                                             std::string ruleId) {
  JsonReplies::reply(
      resp, ScheduleHelperClass::getCurrentPresetScheduleInfo(req, tavel, info, sessionId, ruleId));
}

}  // namespace halvor::kelo
