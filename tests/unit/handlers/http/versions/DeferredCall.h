#pragma once

#include <json/value.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/HttpTypes.h"

namespace halvor::kelo::test {

// The application's background queue, started once for this test program.
inline BackgroundTaskQueue& startedQueue() {
  static BackgroundTaskQueue* queue = [] {
    web::app().registerPluginType<BackgroundTaskQueue>("BackgroundTaskQueue");
    Json::Value root;
    root["plugins"][0]["name"] = "BackgroundTaskQueue";
    root["plugins"][0]["config"] = Json::objectValue;
    web::app().loadConfigJson(root);
    auto* plugin = web::app().getPlugin<BackgroundTaskQueue>();
    Json::Value config;
    config["threads_num"] = 1;
    config["name"] = "versionsTest";
    plugin->initAndStart(config);
    return plugin;
  }();
  return *queue;
}

// The callback of a deferred route, and the response it was called with, across threads. The
// wait polls under the mutex instead of waiting on a condition variable, so that every checker of
// threads (valgrind's too, which does not follow the clock waits of condition variables) sees the
// queue's thread hand the response over.
class DeferredAnswer {
 public:
  web::ResponseCallback callback() {
    return [this](const web::HttpResponsePtr& resp) {
      std::lock_guard lock(mutex_);
      response_ = resp;
      ++calls_;
    };
  }
  web::HttpResponsePtr wait() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (;;) {
      {
        std::lock_guard lock(mutex_);
        if (calls_ > 0 || std::chrono::steady_clock::now() > deadline) return response_;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  int calls() {
    std::lock_guard lock(mutex_);
    return calls_;
  }

 private:
  std::mutex mutex_;
  web::HttpResponsePtr response_;
  int calls_ = 0;
};

}  // namespace halvor::kelo::test
