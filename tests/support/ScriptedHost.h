#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

// A host that answers each path from a script: one step per call, in order, the last step
// repeated. A step returns the answer or throws. The answer is also written into the action, as
// the host does. Every action is kept as it arrived, with its time. A path without a script
// throws std::logic_error. Safe for concurrent calls.
class ScriptedHost : public tavelabi::ITavel {
 public:
  using Step = std::function<tavelabi::Resource(const tavelabi::ResourceAction&)>;

  struct Call {
    tavelabi::ResourceAction action;
    std::chrono::steady_clock::time_point at;
  };

  // The answers of `path`, one per call; the last one repeats.
  void script(const std::string& path, std::vector<tavelabi::Resource> answers);
  void scriptSteps(const std::string& path, std::vector<Step> steps);

  // The host writes its answer into the action; with this, the copy it returns is empty, so that
  // a caller reading the copy finds nothing.
  void returnEmptyCopies(bool empty) { emptyCopies_ = empty; }

  std::vector<Call> calls() const;
  std::vector<Call> callsOn(const std::string& path) const;
  // Waits until `path` has had `count` calls; false after `limit`.
  bool waitForCalls(const std::string& path, std::size_t count,
                    std::chrono::milliseconds limit = std::chrono::seconds(10)) const;

  tavelabi::Resource processResourceAction(tavelabi::ResourceAction& action) override;
  void setPluginStatus(tavelabi::IPluginInfo*, const tavelabi::PluginStatus&) override {}
  void addResourceListener(tavelabi::IPluginInfo*, tavelabi::IResourceListener*) override {}
  void removeResourceListener(tavelabi::IPluginInfo*, tavelabi::IResourceListener*) override {}
  tavelabi::Resource createPluginSession(tavelabi::IPluginInfo*) override { return {}; }
  tavelabi::Resource loginPlugin(tavelabi::IPluginInfo*, const std::string&, const std::string&,
                                 tavelabi::Session) override {
    return {};
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable called_;
  std::map<std::string, std::deque<Step>> scripts_;
  std::vector<Call> calls_;
  std::atomic<bool> emptyCopies_{false};
};

// A completed preset answer: "actionCompleted", "guid" and "value" with one section "presetName".
tavelabi::Resource completedPreset(const std::string& guid, const std::string& name);

}  // namespace halvor::kelo::test
