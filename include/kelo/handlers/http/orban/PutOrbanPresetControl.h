#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"
#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"

namespace halvor::kelo {

// PUT "/1/api/orban/control" with OrbanControl JSON: sets one control of the active preset
// ("set_value" of "/orban/activePreset/controls/<label>") and answers once its "value" equals
// it (200, plain text, empty body). The control is read a period apart on the background queue,
// at most 22 times; then 500 "Communication failure, please try again.".
class PutOrbanPresetControl : public web::HttpController<PutOrbanPresetControl, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putOrbanPresetControl, "/api/orban/control", web::Put)
  KELO_ROUTES_END

  explicit PutOrbanPresetControl(OrbanPresetHelpers::Waits waits = {}) : waits_(waits) {}

  virtual void putOrbanPresetControl(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                     tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                     std::string sessionId, web::ResponseCallback callback);

 private:
  const OrbanPresetHelpers::Waits waits_;
};

}  // namespace halvor::kelo
