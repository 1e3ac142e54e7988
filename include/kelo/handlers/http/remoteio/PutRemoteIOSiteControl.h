#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/remote-io/siteControls": saves a site control and answers it once the host has
// settled it; the wait holds the request's thread.
class PutRemoteIOSiteControl : public web::KeloHttpController<PutRemoteIOSiteControl, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/siteControls", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
