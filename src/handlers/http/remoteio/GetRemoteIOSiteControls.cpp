#include "kelo/handlers/http/remoteio/GetRemoteIOSiteControls.h"

#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRemoteIOSiteControls::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  protobuf::SiteControlList list;
  HostReads::readEach(req, tavel, info, sessionId, "/remoteio/siteControl/list",
                      [&](const std::string& path) {
                        *list.add_sitecontrols() = *RemoteIOHandlerHelpers::makeRemoteIoSiteControl(
                            HostReads::read(req, tavel, info, sessionId, path));
                        return true;
                      });
  JsonReplies::reply(resp, list);
}

}  // namespace halvor::kelo
