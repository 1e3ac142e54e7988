#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// Installed software, the remote service and the remote support tunnel.
// Versions of several components under "/versions/<component>/..." (two and three levels deep)
// and of the skyRun chain under "/skyrun/versions/". The remote service "/lodestar/service/query"
// holds the registration ("lodestarEnabled", "companyName", "callSign", "email", each once set)
// and its "serviceState": "/lodestar/service/update" switched on moves it UNREGISTERED or
// DISABLED -> ENABLING -> ENABLED, switched off ENABLED or ENABLING -> DISABLING -> DISABLED, each
// step after the step delay. The remote support commands answer after the platform's delay, on
// the caller's thread: "/command/qcore/controlSkyRunRemoteSupport" takes "isEnabled", "port",
// "connectionId", "url", "timeout", "/command/qcore/readSkyRunRemoteSupport" answers them; a
// value the platform refuses, or a platform that is out of reach, answers "errorMessage".
class VersionModel : public Model {
 public:
  std::string name() const override { return "versions"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "versions"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  static constexpr const char* kQuery = "/lodestar/service/query";

 private:
  struct Behaviour {
    std::chrono::milliseconds stepDelay{1000};
    std::chrono::milliseconds platformDelay{300};
    std::string platformError;  // empty: the platform answers
  };

  tavelabi::Resource updateService(tavelabi::ResourceAction& action);
  tavelabi::Resource controlSupport(tavelabi::ResourceAction& action);
  tavelabi::Resource readSupport(tavelabi::ResourceAction& action);
  // Waits the platform's delay; its refusal when it is out of reach.
  std::optional<tavelabi::Resource> askPlatform();
  void update(const std::string& path, const tavelabi::Resource& values);

  // Guards everything below: commands run on callers' threads, tick() on the loop's.
  std::mutex mutex_;
  Behaviour behaviour_;
  std::optional<tavelabi::TimePoint> stepSince_;
  tavelabi::Resource support_;
  int nextConnection_ = 4711;
};

}  // namespace halvor::sim
