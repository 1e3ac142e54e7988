#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <vector>

#include "kelo/ConcurrentTaskQueue.h"

namespace halvor::kelo {
namespace {

using namespace std::chrono_literals;

TEST(ConcurrentTaskQueueTest, OneThreadRunsTasksInOrder) {
  ConcurrentTaskQueue queue(1, "ordered");
  std::vector<int> order;
  std::mutex mutex;
  std::promise<void> done;
  for (int i = 0; i < 50; ++i) {
    queue.runTaskInQueue([&, i] {
      std::lock_guard lock(mutex);
      order.push_back(i);
    });
  }
  queue.runTaskInQueue([&done] { done.set_value(); });
  ASSERT_EQ(done.get_future().wait_for(10s), std::future_status::ready);
  std::lock_guard lock(mutex);
  ASSERT_EQ(order.size(), 50u);
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(order[i], i);
  }
}

TEST(ConcurrentTaskQueueTest, ZeroThreadsStillMakesOne) {
  ConcurrentTaskQueue queue(0, "zero");
  std::promise<void> done;
  queue.runTaskInQueue([&done] { done.set_value(); });
  EXPECT_EQ(done.get_future().wait_for(10s), std::future_status::ready);
  EXPECT_EQ(queue.getName(), "zero");
}

TEST(ConcurrentTaskQueueTest, StopLetsTheRunningTaskFinishAndDropsTheWaitingOnes) {
  ConcurrentTaskQueue queue(1, "stopping");
  std::promise<void> started;
  std::atomic<bool> finished{false};
  std::atomic<bool> waitingRan{false};
  queue.runTaskInQueue([&] {
    started.set_value();
    std::this_thread::sleep_for(100ms);
    finished = true;
  });
  queue.runTaskInQueue([&waitingRan] { waitingRan = true; });
  started.get_future().wait();
  queue.stop();
  EXPECT_TRUE(finished);
  EXPECT_FALSE(waitingRan);
  queue.runTaskInQueue([&waitingRan] { waitingRan = true; });
  EXPECT_FALSE(waitingRan);
}

}  // namespace
}  // namespace halvor::kelo
