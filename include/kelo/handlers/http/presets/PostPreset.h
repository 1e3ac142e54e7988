#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// POST "/1/api/presets/clone?guid=...": has the host create a copy of the preset of the query's
// "guid" (passed on percent-coded, as it came) and answers the new preset once it exists. The
// body is not read.
class PostPreset : public web::HttpController<PostPreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(postPreset, "/api/presets/clone", web::Post)
  KELO_ROUTES_END

  virtual void postPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
