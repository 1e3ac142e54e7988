#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/qcore/skyRunRemoteSupport": the remote support tunnel's state, asked of the
// platform by a command that runs on the background queue; an "errorMessage" in its answer is a
// 500 with that text.
class GetSkyRunRemoteSupportHandler
    : public web::HttpController<GetSkyRunRemoteSupportHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(getSkyRunRemoteSupport, "/api/qcore/skyRunRemoteSupport", web::Get)
  KELO_ROUTES_END

  static constexpr const char* kCommand = "/command/qcore/readSkyRunRemoteSupport";

  virtual void getSkyRunRemoteSupport(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
