#pragma once

#include <string>

namespace halvor::kelo {

// The one rule that names a device to clients, shared by the device and alarm endpoints.
class DeviceEndpointHelperClass {
 public:
  DeviceEndpointHelperClass() = delete;

  // The device name, "-" and the device id, with nothing else: ("exciter", "2") gives
  // "exciter-2". A composed name, not a random one, so that it can be taken apart again at its
  // first "-".
  static std::string generateDeviceGuid(std::string deviceName, std::string deviceId);
};

}  // namespace halvor::kelo
