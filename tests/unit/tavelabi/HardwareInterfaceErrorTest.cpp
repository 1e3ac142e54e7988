#include <gtest/gtest.h>

#include <climits>

#include "tavelabi/HardwareInterfaceError.h"

namespace halvor::tavelabi {
namespace {

TEST(HardwareInterfaceErrorTest, AcceptedIsSuccess) {
  HardwareInterfaceError error;
  EXPECT_EQ(error.mapping(0), 0);
}

TEST(HardwareInterfaceErrorTest, OtherCodesStayErrorsWithTheirNumber) {
  HardwareInterfaceError error;
  for (int code : {1, 2, 17, 255, -1, INT_MAX, INT_MIN}) {
    EXPECT_NE(error.mapping(code), 0) << code;
    EXPECT_EQ(error.mapping(code), code);
  }
}

}  // namespace
}  // namespace halvor::tavelabi
