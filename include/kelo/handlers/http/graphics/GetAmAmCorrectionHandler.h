#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/amamcorrection": the AM-to-AM correction curve, as a JSON AmAmCorrection.
// The channels are read under the client's session as user activity.
class GetAmAmCorrectionHandler : public web::KeloHttpController<GetAmAmCorrectionHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/amamcorrection", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
