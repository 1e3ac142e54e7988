#include "OrbanTestSupport.h"

#include <json/value.h>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

ScriptedHost& ScriptedHost::scriptReads(const std::string& path, Script script) {
  // The base must know the path, or it refuses the action before the script is asked.
  answer(path, tavelabi::Resource());
  std::lock_guard lock(scriptMutex_);
  scripts_[path] = std::move(script);
  return *this;
}

int ScriptedHost::readsOf(const std::string& path) const {
  std::lock_guard lock(scriptMutex_);
  const auto found = reads_.find(path);
  return found == reads_.end() ? 0 : found->second;
}

tavelabi::Resource ScriptedHost::processResourceAction(tavelabi::ResourceAction& action) {
  tavelabi::Resource answer = RecordingHost::processResourceAction(action);
  if (action.action != tavelabi::CCRUD::Read) return answer;
  Script script;
  int read = 0;
  {
    std::lock_guard lock(scriptMutex_);
    read = ++reads_[action.path];
    const auto found = scripts_.find(action.path);
    if (found == scripts_.end()) return answer;
    script = found->second;
  }
  answer = script(read);
  action.resource = answer;
  return answer;
}

web::ResponseCallback DeferredAnswer::callback() {
  return [this](const web::HttpResponsePtr& resp) {
    std::lock_guard lock(mutex_);
    response_ = resp;
    ++calls_;
    answered_.notify_all();
  };
}

web::HttpResponsePtr DeferredAnswer::wait(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  answered_.wait_for(lock, limit, [this] { return calls_ > 0; });
  return response_;
}

int DeferredAnswer::calls() const {
  std::lock_guard lock(mutex_);
  return calls_;
}

void startBackgroundQueue(int threads) {
  static const bool started = [threads] {
    web::app().registerPluginType<BackgroundTaskQueue>("BackgroundTaskQueue");
    Json::Value root;
    root["plugins"][0]["name"] = "BackgroundTaskQueue";
    root["plugins"][0]["config"] = Json::objectValue;
    web::app().loadConfigJson(root);
    Json::Value config;
    config["threads_num"] = threads;
    config["name"] = "orbanTest";
    web::app().getPlugin<BackgroundTaskQueue>()->initAndStart(config);
    return true;
  }();
  (void)started;
}

OrbanPresetHelpers::Waits shortWaits() {
  return {std::chrono::milliseconds(2), std::chrono::milliseconds(30)};
}

tavelabi::Resource presetResource(const std::string& name, bool factory) {
  tavelabi::Resource preset("name", tavelabi::ResourceValue(name));
  for (const char* key : {"isFactory", "isModifiable", "isLessMoreAvailable", "isMultiband"}) {
    preset.values[key] = tavelabi::ResourceValue(factory);
  }
  for (const char* key : {"isUser", "isLessMoreUnvailable", "isLowLatency", "isTwoband"}) {
    preset.values[key] = tavelabi::ResourceValue(!factory);
  }
  return preset;
}

tavelabi::Resource presetList(const std::vector<std::string>& names) {
  return tavelabi::Resource(tavelabi::ResourceValue(names));
}

}  // namespace halvor::kelo::test
