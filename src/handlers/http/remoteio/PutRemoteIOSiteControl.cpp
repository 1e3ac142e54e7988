#include "kelo/handlers/http/remoteio/PutRemoteIOSiteControl.h"

#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutRemoteIOSiteControl::processHttpRequest(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                std::string sessionId) {
  JsonReplies::replyJson(resp, RemoteIOHandlerHelpers::saveSiteControl(
                                   "/remoteio/siteControl/update", req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
