#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "sim/SimTavel.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/IResourceListener.h"

namespace halvor::kelo::test {

// An identity for actions made by tests.
class NamedPluginInfo : public tavelabi::IPluginInfo {
 public:
  explicit NamedPluginInfo(std::string name = "Tester") : name_(std::move(name)) {}
  std::string getName() const override { return name_; }
  std::string getVersion() const override { return "0"; }
  uint32_t getId() const override { return 7; }
  std::string getLoggerId() const override { return name_ + "7"; }
  std::string getSessionId() const override { return {}; }

 private:
  std::string name_;
};

// A steady clock that only moves when the test says so.
class ManualClock {
 public:
  std::chrono::steady_clock::time_point now() const {
    return std::chrono::steady_clock::time_point(std::chrono::milliseconds(millis_.load()));
  }
  void advance(std::chrono::milliseconds step) { millis_.fetch_add(step.count()); }
  sim::SessionTable::Clock function() {
    return [this] { return now(); };
  }

 private:
  std::atomic<long long> millis_{1'000'000};
};

// A listener that records what it is handed and on which thread.
class RecordingListener : public tavelabi::AbstractResourceListener {
 public:
  struct Call {
    tavelabi::CCRUD verb;
    std::string path;
    tavelabi::Resource resource;
    std::thread::id thread;
    uint32_t hopCount;
  };

  RecordingListener(const std::string& pattern, std::set<tavelabi::CCRUD> verbs)
      : AbstractResourceListener(pattern, std::move(verbs)) {}

  operator std::string() override { return "recording listener on " + getPattern(); }

  void processResourceListener(const tavelabi::TimePoint& /*now*/,
                               tavelabi::ResourceAction& action) override {
    if (onCall) onCall(action);
    std::lock_guard lock(mutex_);
    calls_.push_back(
        {action.action, action.path, action.resource, std::this_thread::get_id(), action.hopCount});
  }

  std::vector<Call> calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }

  std::function<void(tavelabi::ResourceAction&)> onCall;

 private:
  mutable std::mutex mutex_;
  std::vector<Call> calls_;
};

inline sim::FixtureUser user(const std::string& name, const std::string& role) {
  return sim::FixtureUser{name, name + "-pw", role, {}};
}

// A host with one user of each role and a logged-in session for each.
struct HostWithUsers {
  explicit HostWithUsers(sim::SimTavelOptions options = quietOptions())
      : host(std::make_unique<sim::SimTavel>(std::move(options))) {
    host->addUser(user("admin", "administrator"));
    host->addUser(user("oper", "operator"));
    host->addUser(user("viewer", "read-only"));
    adminSession = host->openSession("admin");
    operatorSession = host->openSession("oper");
    viewerSession = host->openSession("viewer");
  }

  static sim::SimTavelOptions quietOptions() {
    sim::SimTavelOptions options;
    options.echoToConsole = false;
    return options;
  }

  tavelabi::Resource run(tavelabi::CCRUD verb, const std::string& path, const std::string& session,
                         const tavelabi::Resource& resource = tavelabi::Resource()) {
    tavelabi::ResourceAction action(verb, path, resource, &info, session);
    return host->processResourceAction(action);
  }

  NamedPluginInfo info;
  std::unique_ptr<sim::SimTavel> host;
  std::string adminSession;
  std::string operatorSession;
  std::string viewerSession;
};

}  // namespace halvor::kelo::test
