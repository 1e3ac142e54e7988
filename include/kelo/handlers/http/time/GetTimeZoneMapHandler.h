#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/time_settings/tzmap": the regions and their zones, from the host's map.
class GetTimeZoneMapHandler : public web::KeloHttpController<GetTimeZoneMapHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/time_settings/tzmap", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
