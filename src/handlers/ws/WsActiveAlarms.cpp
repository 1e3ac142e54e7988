#include "kelo/handlers/ws/WsActiveAlarms.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsActiveAlarms::messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                                      std::string sessionId, std::string& message,
                                      const std::string& /*path*/) {
  // The session check reads the active list without counting as activity; its answer is not
  // used, so that a push is made from the list it carries.
  WsMessages::checkSession(req, sessionId, kPattern);
  WebKeloInterface& plugin = KeloHost::plugin();
  const auto alarms = AlarmEndpointHelperClass::generateAlarmList(
      req, plugin.tavel, plugin.pluginInfo, sessionId, tavelabi::Resource(resource));
  WsMessages::serialize(*alarms, message);
}

}  // namespace halvor::kelo
