#include "kelo/handlers/http/remoteio/GetRemoteIORule.h"

#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRemoteIORule::getRemoteIORule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, std::string guid) {
  std::string path = guid;
  protobuf::RemoteIoType type = RemoteIOHandlerHelpers::typeOfGuid(guid);
  // A guid shorter than the word fails here with std::out_of_range.
  path.replace(type == protobuf::RemoteIoEnums::INPUT ? 5 : 6, 0, "/");
  JsonReplies::reply(resp, *RemoteIOHandlerHelpers::makeRemoteIoRule(
                               HostReads::read(req, tavel, info, sessionId,
                                               std::string(RemoteIOHandlerHelpers::kPrefix) + path),
                               type));
}

}  // namespace halvor::kelo
