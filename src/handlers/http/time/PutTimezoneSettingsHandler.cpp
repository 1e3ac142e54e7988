#include "kelo/handlers/http/time/PutTimezoneSettingsHandler.h"

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/time/TimeSettingsHelper.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutTimezoneSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                    web::HttpResponsePtr& resp,
                                                    tavelabi::ITavel* tavel,
                                                    tavelabi::IPluginInfo* info,
                                                    std::string sessionId) {
  protobuf::Timezone wanted;
  (void)JsonOptions::fromJson(std::string(req->body()), wanted);
  if (!TimeSettingsHelper::writeSetValue(req, resp, tavel, info, sessionId, "/time/timezone",
                                         tavelabi::ResourceValue(wanted.timezone().value()))) {
    return;
  }
  JsonReplies::reply(resp,
                     *TimeSettingsHelper::generateTimezoneMessage(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
