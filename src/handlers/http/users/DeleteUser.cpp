#include "kelo/handlers/http/users/DeleteUser.h"

#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteUser::deleteUser(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            std::string sessionId, std::string username) {
  KeloResourceAction action(tavelabi::CCRUD::Delete,
                            UserHandlerHelpers::makeUserResourcePath(username), info, sessionId,
                            req);
  (void)tavel->processResourceAction(action);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
