#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "kelo/handlers/http/session/LoginThrottle.h"

namespace halvor::kelo {
namespace {

// I/O threads record and ask at once, on the same addresses and on many others (which makes
// the table prune itself); every failure is counted.
TEST(LoginThrottleConcurrencyTest, ThreadsRecordingAndAskingAtOnceLoseNoFailure) {
  LoginThrottle throttle;
  constexpr unsigned kThreads = 4;
  constexpr unsigned kFailuresEach = 2000;
  throttle.setLimit(kThreads * kFailuresEach);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([&throttle, t] {
      for (unsigned i = 0; i < kFailuresEach; ++i) {
        throttle.recordFailure("shared");
        throttle.recordFailure("10." + std::to_string(t) + "." + std::to_string(i));
        (void)throttle.secondsToWait("shared");
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_GT(throttle.secondsToWait("shared"), 0u);
  throttle.setLimit(kThreads * kFailuresEach + 1);
  EXPECT_EQ(0u, throttle.secondsToWait("shared"));
}

}  // namespace
}  // namespace halvor::kelo
