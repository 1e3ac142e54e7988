#include "kelo/handlers/http/remoteio/PutRemoteIORule.h"

#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutRemoteIORule::putRemoteIORule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, std::string guid) {
  (void)guid;
  KeloResourceAction save(tavelabi::CCRUD::Command, "/remoteio/update",
                          RemoteIOHandlerHelpers::makeRemoteRuleResource(std::string(req->body())),
                          info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(save);
  // The answer names the rule's host path below "/remoteio/"; its word gives the rule's type.
  const std::string saved = answer.values.at("guid").getStringValue();
  const protobuf::RemoteIoType type = RemoteIOHandlerHelpers::typeOfGuid(saved);
  KeloResourceAction poll(tavelabi::CCRUD::Read,
                          std::string(RemoteIOHandlerHelpers::kPrefix) + saved, info, sessionId,
                          req);
  JsonReplies::replyJson(resp, RemoteIOHandlerHelpers::waitForRuleSave(poll, type, tavel));
}

}  // namespace halvor::kelo
