#include "kelo/handlers/http/users/PostUser.h"

#include "halvor/protobuf/Users.pb.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostUser::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId) {
  const auto user = RequestBodies::message<protobuf::User>(req);
  const tavelabi::Resource resource =
      UserHandlerHelpers::buildTavelabiUserResource(user, tavel, info, sessionId);
  KeloResourceAction action(tavelabi::CCRUD::Command, "/user/command/newUser", resource, info,
                            sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  // The name that the host gives back counts, not the one of the body.
  const std::string path =
      UserHandlerHelpers::makeUserResourcePath(answer.values.at("username").getStringValue());
  JsonReplies::reply(
      resp, *EndpointHelpers::getCurrentUserInfo(req, tavel, info, sessionId, path, false));
}

}  // namespace halvor::kelo
