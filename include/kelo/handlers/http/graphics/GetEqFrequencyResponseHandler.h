#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/eqFrequencyResponse": the equaliser's frequency response, as a JSON
// EqFrequencyResponse. The channels are read under the client's session as user activity.
class GetEqFrequencyResponseHandler
    : public web::KeloHttpController<GetEqFrequencyResponseHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/eqFrequencyResponse", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
