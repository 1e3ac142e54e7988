#include <gtest/gtest.h>

#include "kelo/Kelo.h"
#include "kelo/WebKeloInterface.h"
#include "sim/SimTavel.h"

namespace halvor::kelo {
namespace {

TEST(WebKeloInterfaceTest, StartAndShutdownClearThePointers) {
  sim::SimTavel host;
  Kelo info(&host);
  WebKeloInterface plugin;
  plugin.tavel = &host;
  plugin.pluginInfo = &info;
  plugin.initAndStart(Json::Value());
  EXPECT_EQ(plugin.tavel, nullptr);
  EXPECT_EQ(plugin.pluginInfo, nullptr);
  plugin.tavel = &host;
  plugin.pluginInfo = &info;
  plugin.shutdown();
  EXPECT_EQ(plugin.tavel, nullptr);
  EXPECT_EQ(plugin.pluginInfo, nullptr);
}

}  // namespace
}  // namespace halvor::kelo
