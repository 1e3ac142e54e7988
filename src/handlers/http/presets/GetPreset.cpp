#include "kelo/handlers/http/presets/GetPreset.h"

#include <utility>

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPreset::getPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, web::ResponseCallback callback,
                          std::string presetId) {
  PresetHandlerHelpers::answerWithPreset(
      {req, resp, std::move(callback)}, tavel, [req, info, sessionId, presetId] {
        return KeloResourceAction(tavelabi::CCRUD::Command, "/presets/load",
                                  tavelabi::Resource("guid", presetId), info, sessionId, req);
      });
}

}  // namespace halvor::kelo
