#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/skyrun_versions": the versions of the skyRun chain.
class GetSkyrunVersionHandler : public web::KeloHttpController<GetSkyrunVersionHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/skyrun_versions", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
