#include "kelo/handlers/http/session/PostLogout.h"

#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostLogout::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                    tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                    std::string sessionId) {
  KeloResourceAction action(tavelabi::CCRUD::Command, "/user/command/logout", tavelabi::Resource(),
                            info, sessionId, req);
  (void)tavel->processResourceAction(action);
  // The frame's cookie stays as it came: only the host knows that the session has ended.
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
