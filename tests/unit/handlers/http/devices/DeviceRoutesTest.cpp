#include <gtest/gtest.h>

#include <vector>

#include "kelo/handlers/http/devices/DeviceRoutes.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {
namespace {

using HandlerInfo = web::HttpAppFramework::HandlerInfo;

TEST(DeviceRoutesTest, RegistersTheListAndTheSingleDeviceUnderTheVersionPrefix) {
  web::HttpAppFramework application;
  DeviceRoutes::registerDeviceRoutes(application);
  const std::vector<HandlerInfo> expected = {
      {"/1/api/devices", web::Get, "GetDeviceListHandler"},
      {"/1/api/devices/{deviceGUID}", web::Get, "GetDeviceHandler::getDeviceWrapper"},
  };
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

}  // namespace
}  // namespace halvor::kelo
