#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/HttpTypes.h"
#include "support/RecordingHost.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo::test {

// A RecordingHost whose reads of some paths follow a script: the n-th Read of the path (from 1)
// is answered by script(n), so that a wait sees the host change after so many reads. Every
// action is recorded as RecordingHost records it.
class ScriptedHost : public RecordingHost {
 public:
  using Script = std::function<tavelabi::Resource(int read)>;

  ScriptedHost& scriptReads(const std::string& path, Script script);
  // How many reads of `path` the host has answered.
  int readsOf(const std::string& path) const;

  tavelabi::Resource processResourceAction(tavelabi::ResourceAction& action) override;

 private:
  mutable std::mutex scriptMutex_;
  std::map<std::string, Script> scripts_;
  std::map<std::string, int> reads_;
};

// The answer a deferred route gives through its callback, waited for across threads.
class DeferredAnswer {
 public:
  web::ResponseCallback callback();
  // The response, or nullptr when none came within `limit`.
  web::HttpResponsePtr wait(std::chrono::milliseconds limit = std::chrono::seconds(10));
  int calls() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable answered_;
  web::HttpResponsePtr response_;
  int calls_ = 0;
};

// The application's background queue with `threads` threads, started once per test program.
void startBackgroundQueue(int threads = 2);

// Waits short enough for unit tests: 2 ms between reads, 30 ms of settling.
OrbanPresetHelpers::Waits shortWaits();

// A preset resource with every key, as the host keeps one.
tavelabi::Resource presetResource(const std::string& name, bool factory);
// "/orban/presetList"'s answer: the names under "value".
tavelabi::Resource presetList(const std::vector<std::string>& names);

}  // namespace halvor::kelo::test
