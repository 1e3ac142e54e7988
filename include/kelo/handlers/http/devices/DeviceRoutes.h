#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the transmitter's devices.
class DeviceRoutes {
 public:
  DeviceRoutes() = delete;

  // "/1/api/devices" GET and "/1/api/devices/{deviceGUID}" GET.
  static void registerDeviceRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
