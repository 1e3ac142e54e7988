#include "kelo/handlers/http/time/PutDateTimeSettingsHandler.h"

#include <google/protobuf/util/time_util.h>

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/time/TimeSettingsHelper.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutDateTimeSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                    web::HttpResponsePtr& resp,
                                                    tavelabi::ITavel* tavel,
                                                    tavelabi::IPluginInfo* info,
                                                    std::string sessionId) {
  // The converter's status is not looked at: a body that does not parse gives the epoch.
  protobuf::DateAndTime wanted;
  (void)JsonOptions::fromJson(std::string(req->body()), wanted);
  const std::time_t time = google::protobuf::util::TimeUtil::TimestampToTimeT(wanted.dateandtime());
  if (!TimeSettingsHelper::writeSetValue(
          req, resp, tavel, info, sessionId, "/time/dateAndTime",
          tavelabi::ResourceValue(TimeSettingsHelper::localTimeText(time)))) {
    return;
  }
  JsonReplies::reply(resp, *TimeSettingsHelper::generateDateAndTimeMessage(tavel, info, sessionId));
}

}  // namespace halvor::kelo
