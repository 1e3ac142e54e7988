#include <gtest/gtest.h>

#include "SimTestSupport.h"
#include "sim/DemoModels.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using tavelabi::CCRUD;
using tavelabi::TimePoint;

TEST(DemoModelsTest, CreatesOnFirstTickThenUpdatesOncePerSecond) {
  SimTavel host(testing::HostWithUsers::quietOptions());
  testing::RecordingListener listener("/demo/**", {CCRUD::Create, CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  DemoModels demo(host);
  TimePoint start(10s);
  demo.tick(start);
  ASSERT_TRUE(host.peek(DemoModels::kClockPath).has_value());
  EXPECT_EQ(0, host.peek(DemoModels::kCounterPath)->values.at("value").getIntValue());
  EXPECT_NE(std::string::npos,
            host.peek(DemoModels::kClockPath)->values.at("value").getStringValue().find('T'));
  demo.tick(start + 500ms);  // too early
  EXPECT_EQ(0, host.peek(DemoModels::kCounterPath)->values.at("value").getIntValue());
  demo.tick(start + 1s);
  demo.tick(start + 2s);
  EXPECT_EQ(2, host.peek(DemoModels::kCounterPath)->values.at("value").getIntValue());
  host.waitForListeners();
  auto calls = listener.calls();
  ASSERT_EQ(6u, calls.size());
  EXPECT_EQ(CCRUD::Create, calls[0].verb);
  EXPECT_EQ(CCRUD::Update, calls[5].verb);
  EXPECT_EQ(DemoModels::kCounterPath, calls[5].path);
  EXPECT_EQ(2, calls[5].resource.values.at("value").getIntValue());
  host.removeResourceListener(nullptr, &listener);
}

}  // namespace
}  // namespace halvor::sim
