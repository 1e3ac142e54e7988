#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"

#include "halvor/factories/SettingsFactories.h"
#include "halvor/factories/SnmpFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

// Limits of a port from the host's integer "minValue" and "maxValue"; a port is required.
protobuf::Validations portLimits(const std::map<std::string, tavelabi::ResourceValue>& values) {
  protobuf::HalvorPbFactory2Validations factory;
  factory.overrides().mutable_maxvalue()->set_value(
      static_cast<float>(values.at("maxValue").getIntValue()));
  factory.overrides().mutable_minvalue()->set_value(
      static_cast<float>(values.at("minValue").getIntValue()));
  factory.overrides().mutable_required()->set_value(true);
  return *factory.release(nullptr);
}

void addTexts(const tavelabi::Resource& resource,
              google::protobuf::RepeatedPtrField<google::protobuf::StringValue>& target) {
  for (const tavelabi::ResourceValue& text : resource.values.at("value").getListValue()) {
    target.Add()->set_value(text.getStringValue());
  }
}

std::vector<std::string> textsOf(
    const google::protobuf::RepeatedPtrField<google::protobuf::StringValue>& texts) {
  std::vector<std::string> result;
  for (const auto& text : texts) result.push_back(text.value());
  return result;
}

// Integers and bools directly, lists by length and then element by element.
bool sameValue(const tavelabi::ResourceValue& a, const tavelabi::ResourceValue& b) {
  if (a.getType() == tavelabi::ResourceValueType::LIST_VALUE &&
      b.getType() == tavelabi::ResourceValueType::LIST_VALUE) {
    const auto& left = a.getListValue();
    const auto& right = b.getListValue();
    if (left.size() != right.size()) return false;
    for (size_t i = 0; i < left.size(); ++i) {
      if (!(left[i] == right[i])) return false;
    }
    return true;
  }
  return a == b;
}

}  // namespace

const std::vector<std::string>& SnmpSettingsHelperClass::confirmedPaths() {
  static const std::vector<std::string> paths{kAgentPort, kReadCommunity, kWriteCommunity,
                                              kTrapsEnabled, kTrapSettings};
  return paths;
}

std::string SnmpSettingsHelperClass::makeTrapSettingResourcePath(const std::string& guid) {
  return std::string(kTrapSettings) + "/" + guid;
}

protobuf::SNMPTrapSettings SnmpSettingsHelperClass::getTrapSettingFromResource(
    tavelabi::Resource resource) {
  protobuf::HalvorPbFactory2SNMPTrapSettings factory;
  return *factory.build(&resource);
}

tavelabi::Resource SnmpSettingsHelperClass::getTrapSettingResourceFromProtobuf(
    const protobuf::SNMPTrapSettings& settings) {
  tavelabi::Resource resource;
  if (settings.has_guid()) resource.values["guid"] = settings.guid().value();
  if (settings.has_trapreceiver())
    resource.values["trapReceiver"] = settings.trapreceiver().value();
  if (settings.has_trapreceiverport()) {
    resource.values["trapReceiverPort"] = settings.trapreceiverport().value();
  }
  if (settings.has_trapcommunitystring()) {
    resource.values["trapCommunityString"] = settings.trapcommunitystring().value();
  }
  if (settings.has_repeat()) resource.values["repeat"] = settings.repeat().value();
  if (settings.has_timeout()) resource.values["timeout"] = settings.timeout().value();
  // The type always goes, by its name: the default instance names the undefined row.
  resource.values["trapType"] = protobuf::SnmpEnums::SNMPTrapType_Name(settings.traptype());
  return resource;
}

std::shared_ptr<protobuf::SNMPSettings> SnmpSettingsHelperClass::getSnmpSettings(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId) {
  protobuf::HalvorPbFactory2SNMPSettings factory;
  protobuf::SNMPSettings& settings = factory.overrides();
  const tavelabi::Resource agentPort = HostReads::read(req, tavel, info, sessionId, kAgentPort);
  settings.mutable_agentport()->set_value(agentPort.values.at("value").getIntValue());
  addTexts(HostReads::read(req, tavel, info, sessionId, kReadCommunity),
           *settings.mutable_readcommunities());
  addTexts(HostReads::read(req, tavel, info, sessionId, kWriteCommunity),
           *settings.mutable_writecommunities());
  settings.mutable_trapsenabled()->set_value(
      HostReads::read(req, tavel, info, sessionId, kTrapsEnabled)
          .values.at("value")
          .getBoolValue());
  for (const std::string& guid : HostReads::readTexts(req, tavel, info, sessionId, kTrapSettings)) {
    *settings.add_trapsettings() = getTrapSettingFromResource(
        HostReads::read(req, tavel, info, sessionId, makeTrapSettingResourcePath(guid)));
  }
  // Constants of every reply: the single-valued community fields never show a community.
  settings.set_snmpversion(2);
  settings.mutable_readcommunityvalue()->set_value("");
  settings.mutable_writecommunityvalue()->set_value("");
  (*settings.mutable_validations())["agentPort"] = portLimits(agentPort.values);
  const tavelabi::Resource trapLimits =
      HostReads::read(req, tavel, info, sessionId, kTrapValidations);
  (*settings.mutable_validations())["trapReceiverPort"] =
      portLimits(trapLimits.values.at("trapReceiverPort").getMapValue());
  return factory.release(nullptr);
}

std::shared_ptr<protobuf::SNMPTrapSettingsList> SnmpSettingsHelperClass::getListOfAllTrapSettings(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId) {
  auto list = std::make_shared<protobuf::SNMPTrapSettingsList>();
  for (const std::string& guid : HostReads::readTexts(req, tavel, info, sessionId, kTrapList)) {
    *list->add_trapsettings() = getTrapSettingFromResource(
        HostReads::read(req, tavel, info, sessionId, makeTrapSettingResourcePath(guid)));
  }
  return list;
}

void SnmpSettingsHelperClass::setSnmpSettings(const web::HttpRequestPtr& req,
                                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                              const std::string& sessionId,
                                              const protobuf::SNMPSettings* settings) {
  updateResource<int>(req, tavel, info, sessionId, kAgentPort, settings->agentport().value());
  updateResource<std::vector<std::string>>(req, tavel, info, sessionId, kReadCommunity,
                                           textsOf(settings->readcommunities()));
  updateResource<std::vector<std::string>>(req, tavel, info, sessionId, kWriteCommunity,
                                           textsOf(settings->writecommunities()));
  updateResource<bool>(req, tavel, info, sessionId, kTrapsEnabled,
                       settings->trapsenabled().value());
  std::vector<std::string> guids;
  for (const auto& trap : settings->trapsettings()) guids.push_back(trap.guid().value());
  updateResource<std::vector<std::string>>(req, tavel, info, sessionId, kTrapSettings, guids);
}

bool SnmpSettingsHelperClass::confirmPass(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                          tavelabi::IPluginInfo* info, const std::string& sessionId,
                                          std::vector<bool>& done) {
  const auto& paths = confirmedPaths();
  done.resize(paths.size(), false);
  bool all = true;
  for (size_t i = 0; i < paths.size(); ++i) {
    if (done[i]) continue;
    const tavelabi::Resource resource = HostReads::read(req, tavel, info, sessionId, paths[i]);
    done[i] = sameValue(resource.values.at("value"), resource.values.at("set_value"));
    all = all && done[i];
  }
  return all;
}

}  // namespace halvor::kelo
