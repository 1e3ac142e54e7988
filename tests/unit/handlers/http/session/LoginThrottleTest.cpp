#include <gtest/gtest.h>

#include <atomic>

#include "kelo/handlers/http/session/LoginThrottle.h"

namespace halvor::kelo {
namespace {

using namespace std::chrono_literals;

class LoginThrottleTest : public ::testing::Test {
 protected:
  LoginThrottleTest() : throttle([this] { return now; }) { throttle.setLimit(3); }

  void fail(const std::string& address, int times) {
    for (int i = 0; i < times; ++i) throttle.recordFailure(address);
  }

  std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
  LoginThrottle throttle;
};

TEST_F(LoginThrottleTest, AnAddressBelowTheLimitMayTry) {
  fail("a", 2);
  EXPECT_EQ(0u, throttle.secondsToWait("a"));
}

TEST_F(LoginThrottleTest, AtTheLimitTheAddressWaitsUntilTheMinuteOfItsFirstFailureHasPassed) {
  fail("a", 1);
  now += 20s;
  fail("a", 2);
  EXPECT_EQ(40u, throttle.secondsToWait("a"));
  now += 39s + 500ms;
  EXPECT_EQ(1u, throttle.secondsToWait("a"));
  now += 500ms;
  EXPECT_EQ(0u, throttle.secondsToWait("a"));
  // A new minute starts with the next failure.
  fail("a", 2);
  EXPECT_EQ(0u, throttle.secondsToWait("a"));
}

TEST_F(LoginThrottleTest, OtherAddressesAreNotAffected) {
  fail("a", 3);
  EXPECT_EQ(60u, throttle.secondsToWait("a"));
  EXPECT_EQ(0u, throttle.secondsToWait("b"));
}

TEST_F(LoginThrottleTest, FailuresOlderThanAMinuteDoNotAddUp) {
  fail("a", 2);
  now += 61s;
  fail("a", 2);
  EXPECT_EQ(0u, throttle.secondsToWait("a"));
}

TEST_F(LoginThrottleTest, LimitZeroTurnsThrottlingOff) {
  throttle.setLimit(0);
  fail("a", 50);
  EXPECT_EQ(0u, throttle.secondsToWait("a"));
}

TEST(LoginThrottleDefaultsTest, TheSharedThrottleAllowsTenFailuresPerMinuteByDefault) {
  EXPECT_EQ(10u, LoginThrottle::kDefaultFailuresPerMinute);
  LoginThrottle throttle;
  EXPECT_EQ(10u, throttle.limit());
}

}  // namespace
}  // namespace halvor::kelo
