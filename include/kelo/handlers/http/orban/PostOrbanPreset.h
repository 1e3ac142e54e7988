#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"
#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"

namespace halvor::kelo {

// POST "/1/api/orban/preset" with OrbanPresetName JSON: saves a new preset and answers once the
// host lists its name (200, JSON, empty body). The list is read a period apart on the background
// queue, at most 22 times; then 500 "Communication failure, please try again.".
class PostOrbanPreset : public web::HttpController<PostOrbanPreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(postOrbanPreset, "/api/orban/preset", web::Post)
  KELO_ROUTES_END

  explicit PostOrbanPreset(OrbanPresetHelpers::Waits waits = {}) : waits_(waits) {}

  virtual void postOrbanPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, web::ResponseCallback callback);

 private:
  const OrbanPresetHelpers::Waits waits_;
};

}  // namespace halvor::kelo
