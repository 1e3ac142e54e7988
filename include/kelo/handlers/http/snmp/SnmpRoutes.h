#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the SNMP agent.
class SnmpRoutes {
 public:
  SnmpRoutes() = delete;

  // "/1/api/snmp_settings" GET and PUT, "/1/api/snmp_trap_settings_list" GET,
  // "/1/api/snmp_trap_settings" POST, "/1/api/snmp_trap_settings/{guid}" PUT and DELETE.
  static void registerSnmpRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
