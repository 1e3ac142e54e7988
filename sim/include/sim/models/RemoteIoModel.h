#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// Remote I/O under "/remoteio/": input rules "/remoteio/input/<n>" (guid "input<n>") and output
// rules "/remoteio/output/<n>", each listed by path in "/remoteio/inputs/list" and
// "/remoteio/outputs/list"; what the channels can do in "/remoteio/inputs/actions" and
// "/remoteio/outputs/actions"; analog outputs "/remoteio/analog/<guid>" ("/remoteio/analogs/list")
// and site controls "/remoteio/siteControl/<guid>" ("/remoteio/siteControl/list").
// A save or deletion is not done at once: the object reports "transitioning" true until the
// settle delay has passed, then takes the new values (or disappears) with "transitioning" false.
class RemoteIoModel : public Model {
 public:
  std::string name() const override { return "remoteio"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "remoteio"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  // "input3" -> "input/3": the host path of a rule below "/remoteio/"; nullopt for a guid that is
  // not a word and a number.
  static std::optional<std::string> rulePathOf(const std::string& guid);

 private:
  // A save waiting for its delay: the values to store, or none for a deletion.
  struct Pending {
    std::optional<tavelabi::Resource> values;
    std::optional<tavelabi::TimePoint> since;  // set by the first tick that sees it
  };

  tavelabi::Resource updateRule(tavelabi::ResourceAction& action);
  tavelabi::Resource updateAnalog(tavelabi::ResourceAction& action);
  tavelabi::Resource createSiteControl(tavelabi::ResourceAction& action);
  tavelabi::Resource updateSiteControl(tavelabi::ResourceAction& action);
  tavelabi::Resource deleteSiteControl(tavelabi::ResourceAction& action);
  tavelabi::Resource resetLatched(tavelabi::ResourceAction& action);

  // Marks the object as transitioning and keeps what it becomes.
  void begin(const std::string& path, std::optional<tavelabi::Resource> values);
  void settle(const std::string& path, const std::optional<tavelabi::Resource>& values);
  tavelabi::Resource existing(const std::string& path) const;
  void update(const std::string& path, const tavelabi::Resource& values);
  void setListed(const std::string& listPath, const std::string& entry, bool listed);

  // Guards everything below: commands run on callers' threads, tick() on the loop's.
  std::mutex mutex_;
  std::chrono::milliseconds delay_{1500};
  int nextGuid_ = 3;
  std::map<std::string, Pending> pending_;
};

}  // namespace halvor::sim
