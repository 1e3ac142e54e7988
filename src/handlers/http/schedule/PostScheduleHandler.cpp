#include "kelo/handlers/http/schedule/PostScheduleHandler.h"

#include <utility>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/schedule/ScheduleChange.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostScheduleHandler::postSchedule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                       std::string sessionId, web::ResponseCallback callback) {
  protobuf::PresetSchedule rule;
  (void)JsonOptions::fromJson(std::string(req->body()), rule);
  const auto flat = ScheduleHelperClass::prepareScheduleRule(&rule);
  ScheduleChange::send(
      req, tavel, info, sessionId, "/command/scheduler/addRule",
      tavelabi::ResourceValue(tavelabi::ResourceValue::Map(flat.begin(), flat.end())));
  ScheduleChange::confirmInBackground({req, resp, std::move(callback)}, tavel, info, sessionId);
}

}  // namespace halvor::kelo
