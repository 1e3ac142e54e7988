#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/snmp_trap_settings_list": every trap receiver of "/snmp/trapSettings/list", in order.
class GetAllSnmpTrapSettingsHandler
    : public web::KeloHttpController<GetAllSnmpTrapSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/snmp_trap_settings_list", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
