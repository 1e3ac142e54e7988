#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/spectrum": the spectrum: trace, mask and their scale, as a JSON Spectrum.
// The channels are read under the client's session as user activity.
class GetSpectrumHandler : public web::KeloHttpController<GetSpectrumHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/spectrum", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
