#include "kelo/handlers/http/users/GetUser.h"

#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetUser::getUser(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info, std::string sessionId,
                      std::string username) {
  const std::string path = UserHandlerHelpers::makeUserResourcePath(username);
  JsonReplies::reply(
      resp, *EndpointHelpers::getCurrentUserInfo(req, tavel, info, sessionId, path, false));
}

}  // namespace halvor::kelo
