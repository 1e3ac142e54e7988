#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/remote-io/siteControls": creates a site control and answers it once the host has
// settled it; the host gives the new guid. The wait holds the request's thread.
class PostRemoteIOSiteControl : public web::KeloHttpController<PostRemoteIOSiteControl, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/siteControls", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
