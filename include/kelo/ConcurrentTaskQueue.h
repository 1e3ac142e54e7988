#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace halvor::kelo {

// A pool of named threads that run tasks in the order they were handed over.
class ConcurrentTaskQueue {
 public:
  // `threads` of at least one; each thread is named `name` (cut to the system's 15 characters).
  ConcurrentTaskQueue(std::size_t threads, const std::string& name);
  ~ConcurrentTaskQueue();

  ConcurrentTaskQueue(const ConcurrentTaskQueue&) = delete;
  ConcurrentTaskQueue& operator=(const ConcurrentTaskQueue&) = delete;

  // Tasks handed over after stop() are dropped.
  void runTaskInQueue(const std::function<void()>& task);
  void runTaskInQueue(std::function<void()>&& task);
  // Lets the running tasks finish, drops the waiting ones and joins the threads.
  void stop();
  const std::string& getName() const { return name; }

 private:
  void work();

  std::string name;
  std::mutex mutex;
  std::condition_variable wakeUp;
  std::deque<std::function<void()>> tasks;
  bool stopping = false;
  std::vector<std::thread> threads;
};

}  // namespace halvor::kelo
