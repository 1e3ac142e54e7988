#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/ampmcorrection": the AM-to-PM correction curve, as a JSON AmPmCorrection.
// The channels are read under the client's session as user activity.
class GetAmPmCorrectionHandler : public web::KeloHttpController<GetAmPmCorrectionHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/ampmcorrection", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
