#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "support/RecordingHost.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo::test {

// A RecordingHost whose reads of some paths follow a script: the n-th Read of the path (from 1)
// is answered by script(n), so that a wait sees the host change after so many reads. Every
// action is recorded as RecordingHost records it.
class ScriptedReadsHost : public RecordingHost {
 public:
  using Script = std::function<tavelabi::Resource(int read)>;

  ScriptedReadsHost& scriptReads(const std::string& path, Script script);
  // How many reads of `path` the host has answered.
  int readsOf(const std::string& path) const;

  tavelabi::Resource processResourceAction(tavelabi::ResourceAction& action) override;

 private:
  mutable std::mutex scriptMutex_;
  std::map<std::string, Script> scripts_;
  std::map<std::string, int> reads_;
};

// Waits short enough for unit tests: 2 ms between reads, 30 ms of settling.
OrbanPresetHelpers::Waits shortWaits();

// A preset resource with every key, as the host keeps one.
tavelabi::Resource presetResource(const std::string& name, bool factory);
// "/orban/presetList"'s answer: the names under "value".
tavelabi::Resource presetList(const std::vector<std::string>& names);

}  // namespace halvor::kelo::test
