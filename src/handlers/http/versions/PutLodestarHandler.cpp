#include "kelo/handlers/http/versions/PutLodestarHandler.h"

#include "kelo/handlers/http/versions/LodestarSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutLodestarHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const auto settings = RequestBodies::message<protobuf::LodestarSettings>(req);
  KeloResourceAction update(tavelabi::CCRUD::Command, LodestarSettingsHelperClass::kUpdate,
                            LodestarSettingsHelperClass::settingsResource(settings), info,
                            sessionId, req);
  (void)tavel->processResourceAction(update);
  JsonReplies::reply(
      resp, *LodestarSettingsHelperClass::getLodestarSettings(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
