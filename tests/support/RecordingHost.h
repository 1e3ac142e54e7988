#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

// A host double for handler tests: each path gets its own answer or failure, and every action
// is kept as it arrived. An action on a path that the test did not set up throws
// std::logic_error naming the verb and path (unless otherwise() gave a fallback), so that a
// handler test knows every read its handler makes. Safe for concurrent calls.
class RecordingHost : public tavelabi::ITavel {
 public:
  using Failure = std::function<void()>;

  // The answer to every action on `path`, whatever its verb.
  RecordingHost& answer(const std::string& path, tavelabi::Resource resource);
  // The answer to `verb` on `path`; wins over an answer for every verb.
  RecordingHost& answer(tavelabi::CCRUD verb, const std::string& path, tavelabi::Resource resource);
  // Every action on `path` runs `failure`, which throws.
  RecordingHost& fail(const std::string& path, Failure failure);
  // The answer to actions on paths that have none of their own, for handlers whose path is the
  // client's input; without it such an action throws.
  RecordingHost& otherwise(tavelabi::Resource resource);

  // Each action, a copy of it as the host got it, in arrival order.
  std::vector<tavelabi::ResourceAction> actions() const;
  // The actions on one path.
  std::vector<tavelabi::ResourceAction> actionsOn(const std::string& path) const;
  // The one action the host got; std::logic_error when it got another number. The reference
  // stays valid until the next action or clearActions().
  const tavelabi::ResourceAction& onlyAction() const;
  void clearActions();

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
  struct Reply {
    tavelabi::Resource resource;
    Failure failure;
  };
  // The verb key kAnyVerb stands for every verb.
  static constexpr int kAnyVerb = -1;

  mutable std::mutex mutex_;
  std::map<std::pair<int, std::string>, Reply> replies_;
  std::vector<tavelabi::ResourceAction> actions_;
  std::optional<tavelabi::Resource> otherwise_;
};

}  // namespace halvor::kelo::test
