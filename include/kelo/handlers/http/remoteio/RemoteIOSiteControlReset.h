#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/remote-io/siteControls/reset": clears the latched site controls; no wait, no body.
class RemoteIOSiteControlReset : public web::KeloHttpController<RemoteIOSiteControlReset, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/siteControls/reset", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
