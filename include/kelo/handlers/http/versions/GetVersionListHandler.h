#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/versions": every version the host lists under "/versions", in the order listed.
class GetVersionListHandler : public web::KeloHttpController<GetVersionListHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/versions", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
