#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"
#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"

namespace halvor::kelo {

// DELETE "/1/api/orban/preset/{presetName}": asks the host to delete the preset and answers once
// the number of listed presets has changed (200, plain text, empty body). The list is read a
// period apart on the background queue, at most 22 times; then 500 "Communication failure,
// please try again.".
class DeleteOrbanPreset : public web::HttpController<DeleteOrbanPreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(deleteOrbanPreset, "/api/orban/preset/{presetName}", web::Delete)
  KELO_ROUTES_END

  explicit DeleteOrbanPreset(OrbanPresetHelpers::Waits waits = {}) : waits_(waits) {}

  virtual void deleteOrbanPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                 tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                 std::string sessionId, web::ResponseCallback callback,
                                 std::string presetName);

 private:
  const OrbanPresetHelpers::Waits waits_;
};

}  // namespace halvor::kelo
