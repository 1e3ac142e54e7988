#include "kelo/handlers/http/orban/PutOrbanPresetControl.h"

#include <utility>

#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutOrbanPresetControl::putOrbanPresetControl(
    const web::HttpRequestPtr& req, web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
    tavelabi::IPluginInfo* info, std::string sessionId, web::ResponseCallback callback) {
  const auto control = RequestBodies::message<protobuf::OrbanControl>(req);
  tavelabi::Resource change;
  change.values["label"] = tavelabi::ResourceValue(control.label().value());
  change.values["set_value"] = tavelabi::ResourceValue(control.value().value());
  const std::string path =
      OrbanPresetHelpers::controlPath(change.values.at("label").getStringValue());
  OrbanPresetHelpers::update(req, tavel, info, sessionId, path, change);
  resp->setContentTypeCode(web::CT_TEXT_PLAIN);
  BackgroundConfirmation::start(
      {req, resp, std::move(callback)}, waits_.period, OrbanPresetHelpers::communicationFailure(),
      [req, tavel, info, sessionId, path] {
        return OrbanPresetHelpers::controlApplied(req, tavel, info, sessionId, path);
      });
}

}  // namespace halvor::kelo
