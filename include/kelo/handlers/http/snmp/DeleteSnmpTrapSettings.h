#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/snmp_trap_settings/{guid}": deletes one trap receiver; 200 without a body.
class DeleteSnmpTrapSettings : public web::HttpController<DeleteSnmpTrapSettings, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deleteSnmpTrapSettings, "/api/snmp_trap_settings/{guid}", web::Delete)
  KELO_ROUTES_END

  virtual void deleteSnmpTrapSettings(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
