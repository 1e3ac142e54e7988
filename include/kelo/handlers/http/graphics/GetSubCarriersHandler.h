#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/signalConstellation/subCarriers": the constellation's sub-carrier groups, as
// a JSON SubCarrierGroupList. The channels are read under the client's session as user activity.
class GetSubCarriersHandler : public web::KeloHttpController<GetSubCarriersHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/signalConstellation/subCarriers", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
