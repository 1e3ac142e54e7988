#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/snmp_trap_settings/{guid}": changes one trap receiver; the URL's guid wins over the
// body's.
class PutSnmpTrapSettings : public web::HttpController<PutSnmpTrapSettings, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(putSnmpTrapSettings, "/api/snmp_trap_settings/{guid}", web::Put)
  KELO_ROUTES_END

  virtual void putSnmpTrapSettings(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                   tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                   std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
