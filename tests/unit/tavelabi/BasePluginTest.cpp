#include <gtest/gtest.h>

#include "TestPlugin.h"
#include "tavelabi/BasePlugin.h"
#include "tavelabi/ITavel.h"

namespace halvor::tavelabi {
namespace {

TEST(BasePluginTest, StartsEmpty) {
  kelo::test::TestPlugin plugin(nullptr);
  EXPECT_EQ(plugin.getId(), 0U);
  EXPECT_EQ(plugin.getName(), "");
  EXPECT_EQ(plugin.getVersion(), "");
  EXPECT_EQ(plugin.getLoggerId(), "");
  EXPECT_EQ(plugin.getSessionId(), "");
  EXPECT_EQ(plugin.getTavelInterface(), nullptr);
}

TEST(BasePluginTest, SettersAndGetters) {
  auto* host = reinterpret_cast<ITavel*>(0x2000);  // only carried, never called
  kelo::test::TestPlugin plugin(host);
  plugin.setId(7);
  plugin.setName("Kelo");
  plugin.setVersion("2.59.2-r0");
  plugin.setLoggerId("kelo");
  plugin.setSessionId("session-9");
  EXPECT_EQ(plugin.getId(), 7U);
  EXPECT_EQ(plugin.getName(), "Kelo");
  EXPECT_EQ(plugin.getVersion(), "2.59.2-r0");
  EXPECT_EQ(plugin.getLoggerId(), "kelo");
  EXPECT_EQ(plugin.getSessionId(), "session-9");
  EXPECT_EQ(plugin.getTavelInterface(), host);
}

TEST(BasePluginTest, ReachedThroughItsInterfaces) {
  kelo::test::TestPlugin plugin(nullptr);
  plugin.setName("through info");
  IPluginInfo* info = &plugin;
  EXPECT_EQ(info->getName(), "through info");
  IPlugin* asPlugin = &plugin;
  EXPECT_EQ(asPlugin->getTavelInterface(), nullptr);
  IProducerConsumer* loop = &plugin;
  EXPECT_TRUE(loop->produce(TimePoint{}));
}

}  // namespace
}  // namespace halvor::tavelabi
