#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/files/mountedVolumes?fileType=<type>": the mounted volumes that take files of the
// type, as the host names it.
class GetFileUploadTargets : public web::KeloHttpController<GetFileUploadTargets, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/files/mountedVolumes", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
