#include <gtest/gtest.h>

#include "kelo/handlers/http/devices/DeviceEndpointHelperClass.h"

namespace halvor::kelo {
namespace {

TEST(DeviceEndpointHelperClassTest, JoinsNameAndIdWithOneDash) {
  EXPECT_EQ(DeviceEndpointHelperClass::generateDeviceGuid("exciter", "2"), "exciter-2");
  EXPECT_EQ(DeviceEndpointHelperClass::generateDeviceGuid("amplifier", "13"), "amplifier-13");
}

TEST(DeviceEndpointHelperClassTest, AddsNothingElseWhateverTheParts) {
  EXPECT_EQ(DeviceEndpointHelperClass::generateDeviceGuid("", ""), "-");
  EXPECT_EQ(DeviceEndpointHelperClass::generateDeviceGuid("a-b", "c d"), "a-b-c d");
}

}  // namespace
}  // namespace halvor::kelo
