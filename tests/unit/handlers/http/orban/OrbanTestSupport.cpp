#include "OrbanTestSupport.h"

#include <chrono>
#include <utility>

#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

ScriptedReadsHost& ScriptedReadsHost::scriptReads(const std::string& path, Script script) {
  // The base must know the path, or it refuses the action before the script is asked.
  answer(path, tavelabi::Resource());
  std::lock_guard lock(scriptMutex_);
  scripts_[path] = std::move(script);
  return *this;
}

int ScriptedReadsHost::readsOf(const std::string& path) const {
  std::lock_guard lock(scriptMutex_);
  const auto found = reads_.find(path);
  return found == reads_.end() ? 0 : found->second;
}

tavelabi::Resource ScriptedReadsHost::processResourceAction(tavelabi::ResourceAction& action) {
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
