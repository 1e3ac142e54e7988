#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/snmp_settings": the agent, its communities, its trap receivers and the port limits.
class GetSnmpSettingsHandler : public web::KeloHttpController<GetSnmpSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/snmp_settings", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
