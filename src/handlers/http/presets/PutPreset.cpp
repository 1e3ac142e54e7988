#include "kelo/handlers/http/presets/PutPreset.h"

#include <utility>

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutPreset::putPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, web::ResponseCallback callback) {
  PresetHandlerHelpers::answerWithPreset(
      {req, resp, std::move(callback)}, tavel,
      [req, info, sessionId, body = std::string(req->body())] {
        return KeloResourceAction(tavelabi::CCRUD::Command, "/presets/update",
                                  PresetHandlerHelpers::makeBroadcastPresetResource(body), info,
                                  sessionId, req);
      });
}

}  // namespace halvor::kelo
