#include "kelo/handlers/http/users/PostChangeUserPassword.h"

#include "halvor/protobuf/Users.pb.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostChangeUserPassword::processHttpRequest(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                std::string sessionId) {
  const auto change = RequestBodies::message<protobuf::ChangePassword>(req);
  tavelabi::Resource resource;
  if (change.has_username()) resource.values["username"] = change.username().value();
  if (change.has_oldpassword()) resource.values["oldPassword"] = change.oldpassword().value();
  if (change.has_newpassword()) resource.values["newPassword"] = change.newpassword().value();
  KeloResourceAction action(tavelabi::CCRUD::Command, "/user/command/changePassword", resource,
                            info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  const std::string path =
      UserHandlerHelpers::makeUserResourcePath(answer.values.at("username").getStringValue());
  JsonReplies::reply(
      resp, *EndpointHelpers::getCurrentUserInfo(req, tavel, info, sessionId, path, false));
}

}  // namespace halvor::kelo
