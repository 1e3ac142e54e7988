#include "kelo/handlers/http/snmp/SnmpRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/snmp/DeleteSnmpTrapSettings.h"
#include "kelo/handlers/http/snmp/GetAllSnmpTrapSettingsHandler.h"
#include "kelo/handlers/http/snmp/GetSnmpSettingsHandler.h"
#include "kelo/handlers/http/snmp/PostSnmpTrapSettings.h"
#include "kelo/handlers/http/snmp/PutSnmpSettingsHandler.h"
#include "kelo/handlers/http/snmp/PutSnmpTrapSettings.h"

namespace halvor::kelo {

void SnmpRoutes::registerSnmpRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetSnmpSettingsHandler, PutSnmpSettingsHandler, GetAllSnmpTrapSettingsHandler,
                    PostSnmpTrapSettings, PutSnmpTrapSettings, DeleteSnmpTrapSettings>(application);
}

}  // namespace halvor::kelo
