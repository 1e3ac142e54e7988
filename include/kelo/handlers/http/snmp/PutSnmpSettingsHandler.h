#pragma once

#include <chrono>
#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/snmp_settings": writes the agent's settings as "set_value" of five resources and
// answers only when the host reports every "value" equal to its "set_value": the confirmation
// runs on the background queue, one pass a second, without a limit. A write that changes
// nothing is answered after the first pass.
class PutSnmpSettingsHandler : public web::HttpController<PutSnmpSettingsHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(putSnmpSettings, "/api/snmp_settings", web::Put)
  KELO_ROUTES_END

  static constexpr std::chrono::milliseconds kConfirmationPeriod{1000};

  virtual void putSnmpSettings(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, web::ResponseCallback callback);
};

}  // namespace halvor::kelo
