#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "kelo/BackgroundTaskQueue.h"

namespace halvor::kelo {
namespace {

using namespace std::chrono_literals;

Json::Value queueConfig(int threads, const std::string& name) {
  Json::Value config;
  config["threads_num"] = threads;
  config["name"] = name;
  return config;
}

std::string threadName() {
  char name[16] = {};
  prctl(PR_GET_NAME, name, 0, 0, 0);
  return name;
}

TEST(BackgroundTaskQueueTest, TasksBeforeStartAreDroppedSilently) {
  BackgroundTaskQueue queue;
  std::atomic<bool> ran{false};
  queue.runInBackground([&ran] { ran = true; });
  std::function<void()> task = [&ran] { ran = true; };
  queue.runInBackground(task);
  queue.initAndStart(queueConfig(1, "bgEarly"));
  std::promise<void> later;
  queue.runInBackground([&later] { later.set_value(); });
  ASSERT_EQ(later.get_future().wait_for(10s), std::future_status::ready);
  EXPECT_FALSE(ran);
}

TEST(BackgroundTaskQueueTest, TasksRunOnTheQueuesNamedThreads) {
  BackgroundTaskQueue queue;
  queue.initAndStart(queueConfig(2, "bgNamed"));
  std::promise<std::pair<std::string, std::thread::id>> where;
  queue.runInBackground([&where] { where.set_value({threadName(), std::this_thread::get_id()}); });
  auto future = where.get_future();
  ASSERT_EQ(future.wait_for(10s), std::future_status::ready);
  const auto [name, id] = future.get();
  EXPECT_EQ(name, "bgNamed");
  EXPECT_NE(id, std::this_thread::get_id());
}

TEST(BackgroundTaskQueueTest, ASecondStartKeepsTheFirstQueue) {
  BackgroundTaskQueue queue;
  queue.initAndStart(queueConfig(1, "bgFirst"));
  queue.initAndStart(queueConfig(1, "bgSecond"));
  std::promise<std::string> name;
  queue.runInBackground([&name] { name.set_value(threadName()); });
  auto future = name.get_future();
  ASSERT_EQ(future.wait_for(10s), std::future_status::ready);
  EXPECT_EQ(future.get(), "bgFirst");
}

TEST(BackgroundTaskQueueTest, TasksAfterShutdownAreDropped) {
  BackgroundTaskQueue queue;
  queue.initAndStart(queueConfig(2, "bgStop"));
  queue.shutdown();
  std::atomic<bool> ran{false};
  queue.runInBackground([&ran] { ran = true; });
  std::this_thread::sleep_for(50ms);
  EXPECT_FALSE(ran);
  queue.shutdown();  // a second shutdown is harmless
}

TEST(BackgroundTaskQueueTest, AThrowingTaskLeavesTheThreadAlive) {
  BackgroundTaskQueue queue;
  queue.initAndStart(queueConfig(1, "bgThrow"));
  queue.runInBackground([] { throw std::runtime_error("task failed"); });
  std::promise<void> after;
  queue.runInBackground([&after] { after.set_value(); });
  EXPECT_EQ(after.get_future().wait_for(10s), std::future_status::ready);
}

}  // namespace
}  // namespace halvor::kelo
