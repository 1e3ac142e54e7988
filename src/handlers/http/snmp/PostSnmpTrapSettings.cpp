#include "kelo/handlers/http/snmp/PostSnmpTrapSettings.h"

#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostSnmpTrapSettings::processHttpRequest(const web::HttpRequestPtr& req,
                                              web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* info, std::string sessionId) {
  const auto body = RequestBodies::message<protobuf::SNMPTrapSettings>(req);
  KeloResourceAction create(tavelabi::CCRUD::Command, SnmpSettingsHelperClass::kNewTrapCommand,
                            SnmpSettingsHelperClass::getTrapSettingResourceFromProtobuf(body), info,
                            sessionId, req);
  (void)tavel->processResourceAction(create);
  const tavelabi::Resource list =
      HostReads::read(req, tavel, info, sessionId, SnmpSettingsHelperClass::kTrapList);
  const std::string guid = list.values.at("previouslyAdded").getStringValue();
  JsonReplies::reply(resp, SnmpSettingsHelperClass::getTrapSettingFromResource(HostReads::read(
                               req, tavel, info, sessionId,
                               SnmpSettingsHelperClass::makeTrapSettingResourcePath(guid))));
}

}  // namespace halvor::kelo
