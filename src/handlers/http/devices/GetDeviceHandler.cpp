#include "kelo/handlers/http/devices/GetDeviceHandler.h"

#include <regex>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

// The device's resource path. Nothing reads it: the answer is made from the GUID alone, so that
// a client gets its device without a round trip to the host.
std::string devicePath(const std::string& deviceName, const std::string& deviceId) {
  const std::string named = std::regex_replace(std::string("/device/<deviceName>/<deviceId>"),
                                               std::regex("<deviceName>"), deviceName);
  return std::regex_replace(named, std::regex("<deviceId>"), deviceId);
}

}  // namespace

void GetDeviceHandler::getDevice(const web::HttpRequestPtr& /*req*/, web::HttpResponsePtr& resp,
                                 tavelabi::ITavel* /*tavel*/, tavelabi::IPluginInfo* /*info*/,
                                 std::string /*sessionId*/, std::string deviceGuid) {
  // The first "-" divides name and id; without one, both are the whole text.
  const std::size_t divider = deviceGuid.find('-');
  const std::string deviceName =
      divider == std::string::npos ? deviceGuid : deviceGuid.substr(0, divider);
  const std::string deviceId =
      divider == std::string::npos ? deviceGuid : deviceGuid.substr(divider + 1);
  [[maybe_unused]] const std::string path = devicePath(deviceName, deviceId);

  protobuf::HalvorPbFactory2Device factory;
  factory.overrides().mutable_guid()->set_value(deviceGuid);
  factory.overrides().mutable_name()->set_value(deviceName);
  JsonReplies::reply(resp, *factory.build(nullptr));
}

}  // namespace halvor::kelo
