#include <gtest/gtest.h>

#include "tavelabi/ResourceAction.h"

namespace halvor::tavelabi {
namespace {

TEST(ResourceActionTest, ConstructorWithResourceKeepsEveryField) {
  Resource payload("set_value", ResourceValue(4));
  auto* who = reinterpret_cast<IPluginInfo*>(0x1000);  // only carried, never called
  ResourceAction action(CCRUD::Update, "/presets/active", payload, who, "session-1");
  EXPECT_EQ(action.action, CCRUD::Update);
  EXPECT_EQ(action.path, "/presets/active");
  EXPECT_EQ(action.resource.values.at("set_value").getIntValue(), 4);
  EXPECT_EQ(action.pluginInfo, who);
  EXPECT_EQ(action.sessionId, "session-1");
  EXPECT_EQ(action.hopCount, 0U);
  EXPECT_FALSE(action.isLocalHost);
  EXPECT_FALSE(action.isInternal);
  EXPECT_FALSE(action.onSuccess);
  EXPECT_FALSE(action.onFailure);
}

TEST(ResourceActionTest, ConstructorWithoutResourceHasEmptyResource) {
  ResourceAction action(CCRUD::Read, "/meters", nullptr, "s");
  EXPECT_EQ(action.action, CCRUD::Read);
  EXPECT_EQ(action.path, "/meters");
  EXPECT_TRUE(action.resource.values.empty());
  EXPECT_EQ(action.pluginInfo, nullptr);
  EXPECT_EQ(action.sessionId, "s");
  EXPECT_EQ(action.hopCount, 0U);
}

TEST(ResourceActionTest, PayloadIsCopied) {
  Resource payload(ResourceValue(1));
  ResourceAction action(CCRUD::Create, "/x", payload, nullptr, "s");
  payload.updateValue("value", ResourceValue(2));
  EXPECT_EQ(action.resource.values.at("value").getIntValue(), 1);
}

}  // namespace
}  // namespace halvor::tavelabi
