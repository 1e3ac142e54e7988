#include "kelo/handlers/http/versions/LodestarSettingsHelperClass.h"

#include "halvor/factories/VersionFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::LodestarSettings> LodestarSettingsHelperClass::getLodestarSettings(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId) {
  tavelabi::Resource registration = HostReads::read(req, tavel, info, sessionId, kQuery);
  protobuf::HalvorPbFactory2LodestarSettings factory;
  return factory.build(&registration);
}

tavelabi::Resource LodestarSettingsHelperClass::settingsResource(
    const protobuf::LodestarSettings& settings) {
  tavelabi::Resource values;
  if (settings.has_lodestarenabled()) {
    values.values["lodestarEnabled"] = settings.lodestarenabled().value();
  }
  if (settings.has_companyname()) values.values["companyName"] = settings.companyname().value();
  if (settings.has_callsign()) values.values["callSign"] = settings.callsign().value();
  if (settings.has_email()) values.values["email"] = settings.email().value();
  return values;
}

}  // namespace halvor::kelo
