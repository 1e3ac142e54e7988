#include "kelo/handlers/http/remoteio/RemoteIOSiteControlReset.h"

#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void RemoteIOSiteControlReset::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  KeloResourceAction reset(
      tavelabi::CCRUD::Command, "/remoteio/siteControl/resetLatched",
      RemoteIOHandlerHelpers::makeRemoteSiteControlResource(std::string(req->body())), info,
      sessionId, req);
  (void)tavel->processResourceAction(reset);
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
