#include "kelo/handlers/http/snmp/GetSnmpSettingsHandler.h"

#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSnmpSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                std::string sessionId) {
  JsonReplies::reply(resp, *SnmpSettingsHelperClass::getSnmpSettings(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
