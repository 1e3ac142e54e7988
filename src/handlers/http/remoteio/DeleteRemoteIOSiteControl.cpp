#include "kelo/handlers/http/remoteio/DeleteRemoteIOSiteControl.h"

#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteRemoteIOSiteControl::deleteRemoteIOSiteControl(const web::HttpRequestPtr& req,
                                                          web::HttpResponsePtr& resp,
                                                          tavelabi::ITavel* tavel,
                                                          tavelabi::IPluginInfo* info,
                                                          std::string sessionId, std::string guid) {
  KeloResourceAction remove(tavelabi::CCRUD::Command, "/remoteio/siteControl/delete",
                            tavelabi::Resource("guid", guid), info, sessionId, req);
  (void)tavel->processResourceAction(remove);
  KeloResourceAction poll(tavelabi::CCRUD::Read,
                          std::string(RemoteIOHandlerHelpers::kSiteControlPrefix) + guid, info,
                          sessionId, req);
  JsonReplies::replyJson(resp, RemoteIOHandlerHelpers::waitForSiteControlDelete(poll, tavel));
}

}  // namespace halvor::kelo
