#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "kelo/BackgroundTaskQueue.h"

namespace halvor::kelo {
namespace {

Json::Value queueConfig(int threads) {
  Json::Value config;
  config["threads_num"] = threads;
  config["name"] = "bgRace";
  return config;
}

// Handlers hand over tasks from several I/O threads while the queue is started and shut down.
TEST(BackgroundTaskQueueConcurrencyTest, StartRunAndShutdownRace) {
  for (int round = 0; round < 20; ++round) {
    BackgroundTaskQueue queue;
    std::atomic<int> ran{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> posters;
    for (int t = 0; t < 4; ++t) {
      posters.emplace_back([&] {
        while (!go) {
          std::this_thread::yield();
        }
        for (int i = 0; i < 200; ++i) {
          queue.runInBackground([&ran] { ++ran; });
        }
      });
    }
    std::thread starter([&] {
      while (!go) {
        std::this_thread::yield();
      }
      queue.initAndStart(queueConfig(3));
      queue.initAndStart(queueConfig(3));
    });
    std::thread stopper([&] {
      while (!go) {
        std::this_thread::yield();
      }
      std::this_thread::yield();
      queue.shutdown();
    });
    go = true;
    for (auto& poster : posters) {
      poster.join();
    }
    starter.join();
    stopper.join();
    queue.shutdown();
    EXPECT_LE(ran.load(), 800);
  }
}

TEST(BackgroundTaskQueueConcurrencyTest, EveryTaskRunsWhileTheQueueLives) {
  BackgroundTaskQueue queue;
  queue.initAndStart(queueConfig(3));
  std::atomic<int> ran{0};
  std::vector<std::thread> posters;
  for (int t = 0; t < 4; ++t) {
    posters.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        queue.runInBackground([&ran] { ++ran; });
      }
    });
  }
  for (auto& poster : posters) {
    poster.join();
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (ran < 2000 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(ran.load(), 2000);
  queue.shutdown();
}

}  // namespace
}  // namespace halvor::kelo
