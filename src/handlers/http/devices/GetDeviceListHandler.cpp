#include "kelo/handlers/http/devices/GetDeviceListHandler.h"

#include <regex>
#include <vector>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/http/devices/DeviceEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

// The paths are regular expressions made from the host's names at run time; the host's names
// are plain words, so the patterns match them literally.
std::string removeEvery(const std::string& text, const std::string& pattern) {
  return std::regex_replace(text, std::regex(pattern), "");
}

std::string typeListPath(const std::string& deviceName) {
  return std::regex_replace(std::string("/device/<deviceName>/list"), std::regex("<deviceName>"),
                            deviceName);
}

void addDevice(protobuf::DeviceList& list, const std::string& deviceName,
               const std::string& deviceId) {
  protobuf::HalvorPbFactory2Device factory;
  factory.overrides().mutable_guid()->set_value(
      DeviceEndpointHelperClass::generateDeviceGuid(deviceName, deviceId));
  factory.overrides().mutable_name()->set_value(deviceName);
  *list.add_devices() = *factory.build(nullptr);
}

}  // namespace

void GetDeviceListHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                              web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* info, std::string sessionId) {
  protobuf::HalvorPbFactory2DeviceList listFactory;
  const std::shared_ptr<protobuf::DeviceList> devices = listFactory.build(nullptr);
  for (const std::string& typePath :
       HostReads::readTexts(req, tavel, info, sessionId, "/device/list")) {
    const std::string deviceName = removeEvery(typePath, "/device/");
    const std::vector<std::string> devicePaths =
        HostReads::readTexts(req, tavel, info, sessionId, typeListPath(deviceName));
    for (const std::string& devicePath : devicePaths) {
      addDevice(*devices, deviceName, removeEvery(devicePath, "/device/" + deviceName + "/"));
    }
  }
  JsonReplies::reply(resp, *devices);
}

}  // namespace halvor::kelo
