#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "tavelabi/Types.h"

namespace halvor::sim {

class PluginLoader;

// The host's main loop: about 100 passes a second on the steady clock, each calling the
// plug-in's produce and then consume, then the host's own tick (models, session expiry).
// An exception from produce or consume is printed and the loop goes on.
class HostLoop {
 public:
  using Tick = std::function<void(const tavelabi::TimePoint& now)>;
  static constexpr std::chrono::milliseconds kPeriod{10};

  HostLoop(PluginLoader& plugin, Tick tick);

  // Runs until the file descriptor becomes readable (a signalfd, a pipe or an eventfd).
  void run(int stopFd);

  std::uint64_t passes() const { return passes_; }

 private:
  void pass(const tavelabi::TimePoint& now);
  static bool waitForStop(int stopFd, tavelabi::TimePoint until);

  PluginLoader& plugin_;
  Tick tick_;
  std::uint64_t passes_ = 0;
};

}  // namespace halvor::sim
