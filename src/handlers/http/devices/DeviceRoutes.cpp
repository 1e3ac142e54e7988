#include "kelo/handlers/http/devices/DeviceRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/devices/GetDeviceHandler.h"
#include "kelo/handlers/http/devices/GetDeviceListHandler.h"

namespace halvor::kelo {

void DeviceRoutes::registerDeviceRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetDeviceListHandler, GetDeviceHandler>(application);
}

}  // namespace halvor::kelo
