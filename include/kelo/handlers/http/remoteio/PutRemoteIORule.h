#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/remote-io/rules/{guid}": saves a rule and answers it once the host has settled
// it; the wait holds the request's thread. The guid of the body, not the path's, names the rule.
class PutRemoteIORule : public web::HttpController<PutRemoteIORule, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(putRemoteIORule, "/api/remote-io/rules/{guid}", web::Put)
  KELO_ROUTES_END

  virtual void putRemoteIORule(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
