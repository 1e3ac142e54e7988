#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "support/DeferredHandlerTest.h"
#include "support/Requests.h"

namespace halvor::kelo {
namespace {

using namespace std::chrono_literals;

// Many writers start confirmations at once from their own threads, as I/O threads do; the
// queue's two threads run the loops, whose passes watch a value that another thread moves. Each
// request is answered once, with 200, after the value reached its target.
TEST(BackgroundConfirmationConcurrencyTest, ManyLoopsFromManyThreadsEachAnswerOnce) {
  BackgroundTaskQueue& queue = test::startBackgroundQueue(2, "confirmRace");

  constexpr int kWriters = 4;
  constexpr int kEach = 8;
  std::atomic<int> applied{0};
  std::mutex mutex;
  std::vector<int> answers(kWriters * kEach, 0);
  std::vector<int> statuses(kWriters * kEach, 0);
  std::atomic<int> answered{0};

  std::vector<std::thread> writers;
  for (int w = 0; w < kWriters; ++w) {
    writers.emplace_back([&, w] {
      for (int i = 0; i < kEach; ++i) {
        const int id = w * kEach + i;
        const int target = id % 5;
        BackgroundConfirmation::start({test::makeRequest(web::Put, "/1/api/x", "", "{}"),
                                       web::HttpResponse::newHttpResponse(),
                                       [&, id](const web::HttpResponsePtr& resp) {
                                         {
                                           std::lock_guard lock(mutex);
                                           ++answers[id];
                                           statuses[id] = resp->statusCode();
                                         }
                                         ++answered;
                                       }},
                                      1ms, [&applied, target] { return applied.load() >= target; });
      }
    });
  }
  std::thread mover([&] {
    for (int step = 1; step <= 5; ++step) {
      std::this_thread::sleep_for(5ms);
      applied = step;
    }
  });
  for (auto& writer : writers) writer.join();
  mover.join();
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (answered.load() < kWriters * kEach && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(5ms);
  }
  queue.shutdown();
  std::lock_guard lock(mutex);
  for (int id = 0; id < kWriters * kEach; ++id) {
    EXPECT_EQ(answers[id], 1) << id;
    EXPECT_EQ(statuses[id], 200) << id;
  }
}

}  // namespace
}  // namespace halvor::kelo
