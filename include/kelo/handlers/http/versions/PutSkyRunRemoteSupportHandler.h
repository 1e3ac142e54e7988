#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/qcore/skyRunRemoteSupport": switches the remote support tunnel. The command goes
// to the host from the background queue, so that the I/O thread is free while the platform
// answers; an "errorMessage" in its answer is a 500 with that text, otherwise 200 without body.
class PutSkyRunRemoteSupportHandler
    : public web::HttpController<PutSkyRunRemoteSupportHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putSkyRunRemoteSupport, "/api/qcore/skyRunRemoteSupport", web::Put)
  KELO_ROUTES_END

  static constexpr const char* kCommand = "/command/qcore/controlSkyRunRemoteSupport";

  virtual void putSkyRunRemoteSupport(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
