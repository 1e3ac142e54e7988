#include "kelo/handlers/http/orban/DeleteOrbanPreset.h"

#include <utility>

#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteOrbanPreset::deleteOrbanPreset(const web::HttpRequestPtr& req,
                                          web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                          tavelabi::IPluginInfo* info, std::string sessionId,
                                          web::ResponseCallback callback, std::string presetName) {
  const std::size_t listed = OrbanPresetHelpers::presetNames(req, tavel, info, sessionId).size();
  OrbanPresetHelpers::command(req, tavel, info, sessionId, OrbanPresetHelpers::kDelete,
                              tavelabi::Resource(tavelabi::ResourceValue(presetName)));
  resp->setContentTypeCode(web::CT_TEXT_PLAIN);
  // Any change of the number counts: the list is not searched for the name.
  BackgroundConfirmation::start(
      {req, resp, std::move(callback)}, waits_.period, OrbanPresetHelpers::communicationFailure(),
      [req, tavel, info, sessionId, listed] {
        return OrbanPresetHelpers::presetNames(req, tavel, info, sessionId).size() != listed;
      });
}

}  // namespace halvor::kelo
