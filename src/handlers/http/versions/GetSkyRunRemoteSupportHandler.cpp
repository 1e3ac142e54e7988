#include "kelo/handlers/http/versions/GetSkyRunRemoteSupportHandler.h"

#include "halvor/factories/VersionFactories.h"
#include "kelo/handlers/http/versions/VersionHelperClass.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSkyRunRemoteSupportHandler::getSkyRunRemoteSupport(
    const web::HttpRequestPtr& req, web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
    tavelabi::IPluginInfo* info, std::string sessionId, web::ResponseCallback callback) {
  BackgroundConfirmation::startOnce(
      {req, resp, std::move(callback)},
      [req, tavel, info, sessionId](web::HttpResponsePtr& answerResp) {
        tavelabi::Resource answer;
        if (!VersionHelperClass::remoteSupportCommand(req, answerResp, tavel, info, sessionId,
                                                      kCommand, tavelabi::Resource(), answer)) {
          return;
        }
        // Each of the five keys fills its field when the answer has it.
        protobuf::HalvorPbFactory2SkyRunRemoteSupport factory;
        JsonReplies::reply(answerResp, *factory.build(&answer));
      });
}

}  // namespace halvor::kelo
