#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/orban/active": the processor's active preset as OrbanPresetName JSON.
class GetOrbanActivePreset : public web::HttpController<GetOrbanActivePreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getActiveOrban, "/api/orban/active", web::Get)
  KELO_ROUTES_END

  virtual void getActiveOrban(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                              std::string sessionId);
};

}  // namespace halvor::kelo
