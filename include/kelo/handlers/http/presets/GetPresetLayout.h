#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/presets/layout": the host's layout of the preset pages, a text that is JSON
// already, answered as it stands.
class GetPresetLayout : public web::KeloHttpController<GetPresetLayout, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/presets/layout", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
