#include <gtest/gtest.h>

#include <string>

#include "tavelabi/PluginStatus.h"

namespace halvor::tavelabi {
namespace {

TEST(PluginStatusTest, CodesHaveTheirNumbers) {
  EXPECT_EQ(PluginStatus::Ok, 0);
  EXPECT_EQ(PluginStatus::Stopped, 1);
  EXPECT_EQ(PluginStatus::RuntimeFailure, 2);
  EXPECT_EQ(PluginStatus::ConfigurationFailure, 3);
  EXPECT_EQ(PluginStatus::AuthenticationFailure, 4);
  EXPECT_EQ(PluginStatus::Initializing, 5);
}

TEST(PluginStatusTest, KeepsCodeAndText) {
  PluginStatus status(PluginStatus::Stopped, "Kelo Shutting down.");
  EXPECT_EQ(status.getCode(), PluginStatus::Stopped);
  EXPECT_EQ(status.getText(), "Kelo Shutting down.");
}

TEST(PluginStatusTest, CodeNames) {
  EXPECT_STREQ(PluginStatus::codeName(PluginStatus::Ok), "Ok");
  EXPECT_STREQ(PluginStatus::codeName(PluginStatus::Stopped), "Stopped");
  EXPECT_STREQ(PluginStatus::codeName(PluginStatus::RuntimeFailure), "RuntimeFailure");
  EXPECT_STREQ(PluginStatus::codeName(PluginStatus::ConfigurationFailure), "ConfigurationFailure");
  EXPECT_STREQ(PluginStatus::codeName(PluginStatus::AuthenticationFailure),
               "AuthenticationFailure");
  EXPECT_STREQ(PluginStatus::codeName(PluginStatus::Initializing), "Initializing");
  // Code has no fixed underlying type, so its values are those of 3 bits: 7 is a valid Code
  // without a name, whereas 17 would be undefined behaviour (UBSan's enum check says so).
  EXPECT_STREQ(PluginStatus::codeName(static_cast<PluginStatus::Code>(7)), "Unknown");
}

}  // namespace
}  // namespace halvor::tavelabi
