#include "kelo/handlers/http/snmp/PutSnmpTrapSettings.h"

#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutSnmpTrapSettings::putSnmpTrapSettings(const web::HttpRequestPtr& req,
                                              web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* info, std::string sessionId,
                                              std::string guid) {
  const auto body = RequestBodies::message<protobuf::SNMPTrapSettings>(req);
  const std::string path = SnmpSettingsHelperClass::makeTrapSettingResourcePath(guid);
  tavelabi::Resource resource = SnmpSettingsHelperClass::getTrapSettingResourceFromProtobuf(body);
  resource.values["guid"] = tavelabi::ResourceValue(guid);
  KeloResourceAction update(tavelabi::CCRUD::Update, path, resource, info, sessionId, req);
  JsonReplies::reply(resp, SnmpSettingsHelperClass::getTrapSettingFromResource(
                               tavel->processResourceAction(update)));
}

}  // namespace halvor::kelo
