#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpResponse.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "support/ScriptedHost.h"
#include "support/TestApplication.h"

namespace halvor::kelo::test {

// Starts the application's background queue, as the loaded configuration holds it, with
// `threads` threads named after `name`.
inline BackgroundTaskQueue& startConfiguredQueue(int threads, const std::string& name) {
  auto* plugin = web::app().getPlugin<BackgroundTaskQueue>();
  if (plugin == nullptr) throw std::logic_error("the web configuration has no background queue");
  Json::Value config;
  config["threads_num"] = threads;
  config["name"] = name;
  plugin->initAndStart(config);
  return *plugin;
}

// The application's background queue alone, registered, configured and started now with
// `threads` threads named after `name`; for a test that stops it again itself.
inline BackgroundTaskQueue& startBackgroundQueue(int threads, const std::string& name) {
  web::app().registerPluginType<BackgroundTaskQueue>("BackgroundTaskQueue");
  Json::Value root;
  root["plugins"][0]["name"] = "BackgroundTaskQueue";
  root["plugins"][0]["config"] = Json::objectValue;
  web::app().loadConfigJson(root);
  return startConfiguredQueue(threads, name);
}

// The test application's background queue (see loadTestApplication) with `threads` threads,
// started once for this test program. A later call that asks for another count throws: the
// first one's queue is the one every test of the program shares.
inline BackgroundTaskQueue& startedBackgroundQueue(int threads = 2) {
  static const int startedWith = threads;
  static BackgroundTaskQueue& queue = [threads]() -> BackgroundTaskQueue& {
    loadTestApplication();
    return startConfiguredQueue(threads, "deferredHandlerTest");
  }();
  if (threads != startedWith) {
    throw std::logic_error("the background queue was started with another thread count");
  }
  return queue;
}

// The answers that came through completion callbacks, in order, with their times.
class Answers {
 public:
  web::ResponseCallback callback() {
    return [this](const web::HttpResponsePtr& resp) {
      std::lock_guard lock(mutex);
      responses.push_back(resp);
      times.push_back(std::chrono::steady_clock::now());
      arrived.notify_all();
    };
  }

  // The `count`-th answer (1-based), or nullptr after `limit`.
  web::HttpResponsePtr waitFor(std::size_t count = 1,
                               std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    std::unique_lock lock(mutex);
    arrived.wait_for(lock, limit, [&] { return responses.size() >= count; });
    return responses.size() >= count ? responses[count - 1] : nullptr;
  }

  std::size_t count() {
    std::lock_guard lock(mutex);
    return responses.size();
  }

  std::chrono::steady_clock::time_point timeOf(std::size_t index) {
    std::lock_guard lock(mutex);
    return times.at(index);
  }

 private:
  std::mutex mutex;
  std::condition_variable arrived;
  std::vector<web::HttpResponsePtr> responses;
  std::vector<std::chrono::steady_clock::time_point> times;
};

// A handler of the deferred form called as its frame calls it, on a ScriptedHost, with the
// answers that come through its callback.
template <class Handler>
class DeferredHandlerTest : public ::testing::Test {
 protected:
  DeferredHandlerTest() { startedBackgroundQueue(); }

  template <class Operation, class... Params>
  web::HttpResponsePtr callDeferred(Operation operation, const web::HttpRequestPtr& req,
                                    Params&&... params) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    (handler.*operation)(req, resp, &host, &info, "s1", answers.callback(),
                         std::string(std::forward<Params>(params))...);
    return resp;
  }

  ScriptedHost host;
  FakePluginInfo info;
  Answers answers;
  Handler handler;
};

}  // namespace halvor::kelo::test
