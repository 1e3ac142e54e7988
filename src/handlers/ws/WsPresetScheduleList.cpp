#include "kelo/handlers/ws/WsPresetScheduleList.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsPresetScheduleList::messageGenerator(const web::HttpRequestPtr& req,
                                            tavelabi::Resource& /*resource*/, std::string sessionId,
                                            std::string& message, const std::string& /*path*/) {
  const tavelabi::Resource rules = WsMessages::readBypassingActivity(req, sessionId, kPattern);
  WebKeloInterface& plugin = KeloHost::plugin();
  WsMessages::serialize(ScheduleHelperClass::scheduleList(req, plugin.tavel, plugin.pluginInfo,
                                                          sessionId, rules, false),
                        message);
}

}  // namespace halvor::kelo
