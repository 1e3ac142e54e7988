#include "kelo/ConcurrentTaskQueue.h"

#include <sys/prctl.h>

#include <algorithm>

#include "kelo/web/Log.h"

namespace halvor::kelo {

ConcurrentTaskQueue::ConcurrentTaskQueue(std::size_t threadCount, const std::string& queueName)
    : name(queueName) {
  threadCount = std::max<std::size_t>(threadCount, 1);
  threads.reserve(threadCount);
  for (std::size_t i = 0; i < threadCount; ++i) {
    threads.emplace_back([this] { work(); });
  }
}

ConcurrentTaskQueue::~ConcurrentTaskQueue() { stop(); }

void ConcurrentTaskQueue::runTaskInQueue(const std::function<void()>& task) {
  runTaskInQueue(std::function<void()>(task));
}

void ConcurrentTaskQueue::runTaskInQueue(std::function<void()>&& task) {
  {
    std::lock_guard lock(mutex);
    if (stopping) {
      return;
    }
    tasks.push_back(std::move(task));
  }
  wakeUp.notify_one();
}

void ConcurrentTaskQueue::stop() {
  {
    std::lock_guard lock(mutex);
    stopping = true;
    tasks.clear();
  }
  wakeUp.notify_all();
  for (auto& thread : threads) {
    if (thread.joinable() && thread.get_id() != std::this_thread::get_id()) {
      thread.join();
    }
  }
}

void ConcurrentTaskQueue::work() {
  prctl(PR_SET_NAME, name.c_str(), 0, 0, 0);
  for (;;) {
    std::function<void()> task;
    {
      std::unique_lock lock(mutex);
      wakeUp.wait(lock, [this] { return stopping || !tasks.empty(); });
      if (stopping) {
        return;
      }
      task = std::move(tasks.front());
      tasks.pop_front();
    }
    // A task that throws must not take the pool's thread with it.
    try {
      task();
    } catch (const std::exception& e) {
      web::logLine(web::kError, "Background task of " + name + " failed: " + e.what());
    } catch (...) {
      web::logLine(web::kError, "Background task of " + name + " failed");
    }
  }
}

}  // namespace halvor::kelo
