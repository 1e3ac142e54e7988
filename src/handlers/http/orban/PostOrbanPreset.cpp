#include "kelo/handlers/http/orban/PostOrbanPreset.h"

#include <algorithm>
#include <utility>

#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostOrbanPreset::postOrbanPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, web::ResponseCallback callback) {
  const auto preset = RequestBodies::message<protobuf::OrbanPresetName>(req);
  // The list is read before the save, so that a host without it fails the request at once.
  (void)OrbanPresetHelpers::presetNames(req, tavel, info, sessionId);
  OrbanPresetHelpers::savePreset(req, tavel, info, sessionId, preset);
  const std::string name = preset.name().value();
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  BackgroundConfirmation::start(
      {req, resp, std::move(callback)}, waits_.period, OrbanPresetHelpers::communicationFailure(),
      [req, tavel, info, sessionId, name] {
        const auto names = OrbanPresetHelpers::presetNames(req, tavel, info, sessionId);
        return std::find(names.begin(), names.end(), name) != names.end();
      });
}

}  // namespace halvor::kelo
