#include "kelo/handlers/http/time/PutNtpSettingsHandler.h"

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/time/TimeSettingsHelper.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutNtpSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  protobuf::NTPSettings wanted;
  (void)JsonOptions::fromJson(std::string(req->body()), wanted);
  if (!TimeSettingsHelper::writeSetValue(req, resp, tavel, info, sessionId, "/time/ntp",
                                         tavelabi::ResourceValue(wanted.ntpenabled().value())) ||
      !TimeSettingsHelper::writeSetValue(req, resp, tavel, info, sessionId, "/time/ntpServer",
                                         tavelabi::ResourceValue(wanted.ntpserver().value()))) {
    return;
  }
  JsonReplies::reply(resp,
                     *TimeSettingsHelper::generateNtpSettingsMessage(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
