#include "kelo/BackgroundTaskQueue.h"

#include <mutex>

namespace halvor::kelo {

BackgroundTaskQueue::~BackgroundTaskQueue() { shutdown(); }

void BackgroundTaskQueue::initAndStart(const Json::Value& config) {
  std::unique_lock lock(queueMutex);
  if (queue) {
    return;
  }
  queue = std::make_unique<ConcurrentTaskQueue>(config["threads_num"].asUInt(),
                                                config["name"].asString());
}

void BackgroundTaskQueue::shutdown() {
  std::unique_ptr<ConcurrentTaskQueue> stopped;
  {
    std::unique_lock lock(queueMutex);
    stopped = std::move(queue);
  }
  // Stopped outside the lock: a running task may itself hand over another one.
  if (stopped) {
    stopped->stop();
  }
}

void BackgroundTaskQueue::runInBackground(const std::function<void()>& task) {
  std::shared_lock lock(queueMutex);
  if (queue) {
    queue->runTaskInQueue(task);
  }
}

void BackgroundTaskQueue::runInBackground(std::function<void()>&& task) {
  std::shared_lock lock(queueMutex);
  if (queue) {
    queue->runTaskInQueue(std::move(task));
  }
}

}  // namespace halvor::kelo
