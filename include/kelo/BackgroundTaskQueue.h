#pragma once

#include <functional>
#include <memory>
#include <shared_mutex>

#include "kelo/ConcurrentTaskQueue.h"
#include "kelo/web/Plugin.h"

namespace halvor::kelo {

// Keeps long host operations off the I/O threads. Configured in the web configuration file with
// "threads_num" and "name".
class BackgroundTaskQueue : public web::Plugin<BackgroundTaskQueue> {
 public:
  ~BackgroundTaskQueue() override;

  void initAndStart(const Json::Value& config) override;
  void shutdown() override;

  // Without a started queue the task is dropped silently.
  void runInBackground(const std::function<void()>& task);
  void runInBackground(std::function<void()>&& task);

 private:
  // Handlers post from I/O threads while shutdown may run on another: the pointer is guarded.
  std::shared_mutex queueMutex;
  std::unique_ptr<ConcurrentTaskQueue> queue;
};

}  // namespace halvor::kelo
