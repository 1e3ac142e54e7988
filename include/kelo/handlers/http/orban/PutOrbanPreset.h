#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/orban/preset" with OrbanPresetName JSON: saves the preset over the one of that
// name and answers at once (200, JSON, empty body), without waiting for the processor.
class PutOrbanPreset : public web::HttpController<PutOrbanPreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(putOrbanPreset, "/api/orban/preset", web::Put)
  KELO_ROUTES_END

  virtual void putOrbanPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                              std::string sessionId);
};

}  // namespace halvor::kelo
