#include "kelo/handlers/http/users/GetUserList.h"

#include "halvor/protobuf/Users.pb.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetUserList::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                     tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                     std::string sessionId) {
  protobuf::UserList users;
  for (const std::string& name :
       HostReads::readTexts(req, tavel, info, sessionId, "/user/users/list/all")) {
    *users.add_users() = std::move(*EndpointHelpers::getCurrentUserInfo(
        req, tavel, info, sessionId, UserHandlerHelpers::makeUserResourcePath(name), false));
  }
  JsonReplies::reply(resp, users);
}

}  // namespace halvor::kelo
