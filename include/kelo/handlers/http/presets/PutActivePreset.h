#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/presets/active": puts the preset of the body's "guid" on air and answers, once the
// hardware has finished, with the preset now active. The body is read on the request's thread;
// the wait runs on the background queue.
class PutActivePreset : public web::HttpController<PutActivePreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putActivePreset, "/api/presets/active", web::Put)
  KELO_ROUTES_END

  virtual void putActivePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
