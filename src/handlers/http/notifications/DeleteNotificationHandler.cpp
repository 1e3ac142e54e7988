#include "kelo/handlers/http/notifications/DeleteNotificationHandler.h"

#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteNotificationHandler::deleteNotification(const web::HttpRequestPtr& req,
                                                   web::HttpResponsePtr& resp,
                                                   tavelabi::ITavel* tavel,
                                                   tavelabi::IPluginInfo* info,
                                                   std::string sessionId, std::string guid) {
  KeloResourceAction remove(tavelabi::CCRUD::Command, NotificationHelperClass::kDeleteCommand,
                            tavelabi::Resource("guid", guid), info, sessionId, req);
  (void)tavel->processResourceAction(remove);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
