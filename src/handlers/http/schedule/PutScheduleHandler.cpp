#include "kelo/handlers/http/schedule/PutScheduleHandler.h"

#include <utility>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/schedule/ScheduleChange.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutScheduleHandler::putScheduleRule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId, web::ResponseCallback callback,
                                         std::string ruleId) {
  protobuf::PresetSchedule rule;
  (void)JsonOptions::fromJson(std::string(req->body()), rule);
  auto flat = ScheduleHelperClass::prepareScheduleRule(&rule);
  flat["ruleId"] = tavelabi::ResourceValue(ScheduleChange::ruleNumber(ruleId));
  ScheduleChange::send(
      req, tavel, info, sessionId, "/command/scheduler/editRule",
      tavelabi::ResourceValue(tavelabi::ResourceValue::Map(flat.begin(), flat.end())));
  ScheduleChange::confirmInBackground({req, resp, std::move(callback)}, tavel, info, sessionId);
}

}  // namespace halvor::kelo
