#include "kelo/handlers/http/users/PutUser.h"

#include "halvor/protobuf/Users.pb.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutUser::putUser(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info, std::string sessionId,
                      std::string username) {
  const std::string path = UserHandlerHelpers::makeUserResourcePath(username);
  const auto user = RequestBodies::message<protobuf::User>(req);
  tavelabi::Resource resource =
      UserHandlerHelpers::buildTavelabiUserResource(user, tavel, info, sessionId);
  // A body's own name stays: sent to the old path, it is how a user gets a new name.
  if (resource.values.count("username") == 0) {
    resource.values["username"] = tavelabi::ResourceValue(username);
  }
  KeloResourceAction action(tavelabi::CCRUD::Update, path, resource, info, sessionId, req);
  (void)tavel->processResourceAction(action);
  JsonReplies::reply(
      resp, *EndpointHelpers::getCurrentUserInfo(req, tavel, info, sessionId, path, false));
}

}  // namespace halvor::kelo
