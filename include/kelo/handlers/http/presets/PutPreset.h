#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/presets/update": stores the body's preset (BroadcastPreset JSON) and answers it as
// the host then holds it. The body is converted on the background queue, so a bad one is a 500 from
// there.
class PutPreset : public web::HttpController<PutPreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putPreset, "/api/presets/update", web::Put)
  KELO_ROUTES_END

  virtual void putPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                         std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
