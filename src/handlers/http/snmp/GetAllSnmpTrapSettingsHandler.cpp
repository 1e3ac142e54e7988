#include "kelo/handlers/http/snmp/GetAllSnmpTrapSettingsHandler.h"

#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAllSnmpTrapSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                       web::HttpResponsePtr& resp,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* info,
                                                       std::string sessionId) {
  JsonReplies::reply(
      resp, *SnmpSettingsHelperClass::getListOfAllTrapSettings(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
