#include "support/ScriptedHost.h"

#include <stdexcept>
#include <utility>

namespace halvor::kelo::test {

using tavelabi::Resource;
using tavelabi::ResourceValue;

void ScriptedHost::script(const std::string& path, std::vector<Resource> answers) {
  std::vector<Step> steps;
  for (Resource& answer : answers) {
    steps.push_back(
        [answer = std::move(answer)](const tavelabi::ResourceAction&) { return answer; });
  }
  scriptSteps(path, std::move(steps));
}

void ScriptedHost::scriptSteps(const std::string& path, std::vector<Step> steps) {
  std::lock_guard lock(mutex_);
  scripts_[path] = std::deque<Step>(steps.begin(), steps.end());
}

std::vector<ScriptedHost::Call> ScriptedHost::calls() const {
  std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<ScriptedHost::Call> ScriptedHost::callsOn(const std::string& path) const {
  std::vector<Call> found;
  for (const Call& call : calls()) {
    if (call.action.path == path) found.push_back(call);
  }
  return found;
}

bool ScriptedHost::waitForCalls(const std::string& path, std::size_t count,
                                std::chrono::milliseconds limit) const {
  std::unique_lock lock(mutex_);
  return called_.wait_for(lock, limit, [&] {
    std::size_t seen = 0;
    for (const Call& call : calls_) seen += call.action.path == path ? 1 : 0;
    return seen >= count;
  });
}

Resource ScriptedHost::processResourceAction(tavelabi::ResourceAction& action) {
  Step step;
  {
    std::lock_guard lock(mutex_);
    calls_.push_back({action, std::chrono::steady_clock::now()});
    called_.notify_all();
    auto found = scripts_.find(action.path);
    if (found == scripts_.end() || found->second.empty()) {
      throw std::logic_error("no script for " + action.path);
    }
    step = found->second.front();
    if (found->second.size() > 1) found->second.pop_front();
  }
  Resource answer = step(action);
  action.resource = answer;
  if (emptyCopies_) return Resource();
  return answer;
}

Resource completedPreset(const std::string& guid, const std::string& name) {
  Resource answer("actionCompleted", ResourceValue(true));
  answer.values["guid"] = ResourceValue(guid);
  answer.values["value"] = ResourceValue(
      ResourceValue::Map{{"presetName", ResourceValue(ResourceValue::Map{{"value", name}})}});
  return answer;
}

}  // namespace halvor::kelo::test
