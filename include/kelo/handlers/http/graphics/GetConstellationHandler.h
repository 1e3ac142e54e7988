#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/constellation": the signal constellation, as a JSON Constellation. The
// channels are read under the client's session as user activity.
class GetConstellationHandler : public web::KeloHttpController<GetConstellationHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/constellation", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
