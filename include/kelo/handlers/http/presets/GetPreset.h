#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/presets/{presetId}": has the host load the preset and answers it once loaded. The
// wait runs on the background queue.
class GetPreset : public web::HttpController<GetPreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(getPreset, "/api/presets/{presetId}", web::Get)
  KELO_ROUTES_END

  virtual void getPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                         std::string sessionId, web::ResponseCallback callback,
                         std::string presetId);
};

}  // namespace halvor::kelo
