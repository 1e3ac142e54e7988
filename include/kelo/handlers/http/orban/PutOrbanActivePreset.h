#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"
#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"

namespace halvor::kelo {

// PUT "/1/api/orban/active" with {"name": ...}: asks the processor for another active preset
// ("set_value" of "/orban/activePreset/name") and answers with the request's own body once the
// processor has it. The wait runs on the background queue in two stages: until the reported
// name holds the asked-for one (a period apart, without limit), then until "updated" is true (at
// most 20 periods more; then it answers all the same), followed by the settling time.
class PutOrbanActivePreset : public web::HttpController<PutOrbanActivePreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putOrbanActivePreset, "/api/orban/active", web::Put)
  KELO_ROUTES_END

  explicit PutOrbanActivePreset(OrbanPresetHelpers::Waits waits = {}) : waits_(waits) {}

  virtual void putOrbanActivePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                    tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                    std::string sessionId, web::ResponseCallback callback);

 private:
  const OrbanPresetHelpers::Waits waits_;
};

}  // namespace halvor::kelo
