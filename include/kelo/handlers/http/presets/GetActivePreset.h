#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/presets/active": the preset on air, with its sections.
class GetActivePreset : public web::HttpController<GetActivePreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getActivePreset, "/api/presets/active", web::Get)
  KELO_ROUTES_END

  virtual void getActivePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId);
};

}  // namespace halvor::kelo
