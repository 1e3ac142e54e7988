#include "kelo/handlers/http/remoteio/GetRemoteIOOutputRules.h"

#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRemoteIOOutputRules::processHttpRequest(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                std::string sessionId) {
  protobuf::RemoteIoRules list;
  HostReads::readEach(
      req, tavel, info, sessionId, "/remoteio/outputs/list", [&](const std::string& path) {
        *list.add_rules() = *RemoteIOHandlerHelpers::makeRemoteIoRule(
            HostReads::read(req, tavel, info, sessionId, path), protobuf::RemoteIoEnums::OUTPUT);
        return true;
      });
  JsonReplies::reply(resp, list);
}

}  // namespace halvor::kelo
