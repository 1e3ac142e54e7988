#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/powerdistribution": the power distribution curve, as a JSON
// PowerDistribution. The channels are read under the client's session as user activity.
class GetPowerDistributionHandler
    : public web::KeloHttpController<GetPowerDistributionHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/powerdistribution", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
