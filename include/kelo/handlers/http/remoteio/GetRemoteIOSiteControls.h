#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/remote-io/siteControls": every site control, each read from the path the list names.
class GetRemoteIOSiteControls : public web::KeloHttpController<GetRemoteIOSiteControls, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/siteControls", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
