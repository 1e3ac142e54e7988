#include "kelo/handlers/http/snmp/DeleteSnmpTrapSettings.h"

#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteSnmpTrapSettings::deleteSnmpTrapSettings(const web::HttpRequestPtr& req,
                                                    web::HttpResponsePtr& resp,
                                                    tavelabi::ITavel* tavel,
                                                    tavelabi::IPluginInfo* info,
                                                    std::string sessionId, std::string guid) {
  KeloResourceAction remove(tavelabi::CCRUD::Command, SnmpSettingsHelperClass::kDeleteTrapCommand,
                            tavelabi::Resource("guid", guid), info, sessionId, req);
  (void)tavel->processResourceAction(remove);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
