#include "kelo/handlers/http/alarms/GetAlarm.h"

#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAlarm::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId) {
  const std::string path = QueryParameters::required(req, "path");
  const auto alarm =
      AlarmEndpointHelperClass::getCurrentAlarmInfo(req, tavel, info, sessionId, path);
  JsonReplies::replyWithDefaults(resp, *alarm);
}

}  // namespace halvor::kelo
