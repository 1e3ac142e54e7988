#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/remote-io/rules/{guid}": one rule. The guid is the word and the number together
// ("input3"); the host's path has a "/" between them ("/remoteio/input/3").
class GetRemoteIORule : public web::HttpController<GetRemoteIORule, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getRemoteIORule, "/api/remote-io/rules/{guid}", web::Get)
  KELO_ROUTES_END

  virtual void getRemoteIORule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
