#include "kelo/handlers/http/remoteio/GetRemoteIOAnalogOutputs.h"

#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRemoteIOAnalogOutputs::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  protobuf::AnalogOutputList list;
  HostReads::readEach(
      req, tavel, info, sessionId, "/remoteio/analogs/list", [&](const std::string& path) {
        *list.add_analogoutputs() = *RemoteIOHandlerHelpers::makeRemoteIoAnalogOutput(
            HostReads::read(req, tavel, info, sessionId, path));
        return true;
      });
  JsonReplies::reply(resp, list);
}

}  // namespace halvor::kelo
