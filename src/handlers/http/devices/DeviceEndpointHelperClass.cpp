#include "kelo/handlers/http/devices/DeviceEndpointHelperClass.h"

namespace halvor::kelo {

std::string DeviceEndpointHelperClass::generateDeviceGuid(std::string deviceName,
                                                          std::string deviceId) {
  return deviceName + "-" + deviceId;
}

}  // namespace halvor::kelo
