#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/remote-io/siteControls/{guid}": deletes a site control and answers once the
// host no longer has it; the wait holds the request's thread.
class DeleteRemoteIOSiteControl : public web::HttpController<DeleteRemoteIOSiteControl, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deleteRemoteIOSiteControl, "/api/remote-io/siteControls/{guid}", web::Delete)
  KELO_ROUTES_END

  virtual void deleteRemoteIOSiteControl(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
