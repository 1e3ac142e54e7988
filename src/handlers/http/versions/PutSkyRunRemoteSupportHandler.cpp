#include "kelo/handlers/http/versions/PutSkyRunRemoteSupportHandler.h"

#include "halvor/protobuf/Versions.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/versions/VersionHelperClass.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutSkyRunRemoteSupportHandler::putSkyRunRemoteSupport(
    const web::HttpRequestPtr& req, web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
    tavelabi::IPluginInfo* info, std::string sessionId, web::ResponseCallback callback) {
  // The converter's status is not looked at: what does not parse stays unset and is not sent.
  protobuf::SkyRunRemoteSupport support;
  (void)JsonOptions::fromJson(std::string(req->body()), support);
  const tavelabi::Resource values = VersionHelperClass::remoteSupportResource(support);
  BackgroundConfirmation::startOnce(
      {req, resp, std::move(callback)},
      [req, tavel, info, sessionId, values](web::HttpResponsePtr& answerResp) {
        tavelabi::Resource answer;
        if (VersionHelperClass::remoteSupportCommand(req, answerResp, tavel, info, sessionId,
                                                     kCommand, values, answer)) {
          answerResp->setStatusCode(web::k200OK);
        }
      });
}

}  // namespace halvor::kelo
