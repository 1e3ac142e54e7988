#include "kelo/handlers/http/alarms/GetActiveAlarms.h"

#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetActiveAlarms::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId) {
  // An empty resource: the helper reads the host's list of active alarms itself.
  const auto alarms = AlarmEndpointHelperClass::generateAlarmList(req, tavel, info, sessionId,
                                                                  tavelabi::Resource());
  JsonReplies::replyWithDefaults(resp, *alarms);
}

}  // namespace halvor::kelo
