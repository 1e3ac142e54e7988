#pragma once

#include <json/value.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

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

// The callback of a deferred route, and the response it was called with, across threads.
class DeferredAnswer {
 public:
  web::ResponseCallback callback() {
    return [this](const web::HttpResponsePtr& resp) {
      std::lock_guard lock(mutex_);
      response_ = resp;
      ++calls_;
      answered_.notify_all();
    };
  }
  web::HttpResponsePtr wait() {
    std::unique_lock lock(mutex_);
    answered_.wait_for(lock, std::chrono::seconds(10), [this] { return calls_ > 0; });
    return response_;
  }
  int calls() {
    std::lock_guard lock(mutex_);
    return calls_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable answered_;
  web::HttpResponsePtr response_;
  int calls_ = 0;
};

}  // namespace halvor::kelo::test
