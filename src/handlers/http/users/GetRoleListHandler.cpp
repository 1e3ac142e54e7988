#include "kelo/handlers/http/users/GetRoleListHandler.h"

#include "kelo/handlers/http/users/RoleHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRoleListHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  JsonReplies::reply(resp, RoleHelperClass::getRoles(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
