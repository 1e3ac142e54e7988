#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/presets": the host's presets, each with its sections, in the host's order.
class GetPresetList : public web::KeloHttpController<GetPresetList, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/presets", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
