#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "EmbeddedHost.h"
#include "sim/SimTavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

// The steps the fan-out benchmark servers share: the bench user's session, the wait for the
// clients, the timed change loop with its wall and CPU figures, and the wait for the stop signal.
// What a benchmark seeds and changes stays in the benchmark.
class ServerSteps {
 public:
  using Clock = std::chrono::steady_clock;

  // One round of the timed loop: its number from 0, when the loop and when the round began.
  struct Round {
    int index = 0;
    Clock::time_point loopStart;
    Clock::time_point start;
  };

  struct Measured {
    double wallSeconds = 0;
    double cpuSeconds = 0;
    double cpuPercent() const { return 100.0 * cpuSeconds / wallSeconds; }
  };

  // "--name value" pairs, each value an integer stored through the pointer named for its option.
  // False on an option that is not named; a last option without a value is passed over.
  static bool parse(int argc, char** argv, const std::map<std::string, int*>& options);

  // The host with the read-only user "bench" and its session "bench-session", which the
  // clients send as their cookie.
  static EmbeddedHost::Options hostOptions(const std::string& name, int ioThreads);
  static void openBenchSession(sim::SimTavel& host);

  // One action of the benchmark itself on the host (no session), as its models would make it:
  // the seeding of its resources and each change.
  static void act(sim::SimTavel& host, tavelabi::CCRUD verb, const std::string& path,
                  const tavelabi::Resource& resource);

  // CPU time of this process, user and system, in seconds.
  static double cpuSeconds();
  // The steady clock in whole microseconds, as the benchmarks stamp their changes.
  static double stampMicroseconds();
  // WebSocket clients subscribed to any path of the plug-in's listener manager.
  static std::size_t subscribedClients();

  // Waits until subscribed() reaches clients (at most 300 s), then 2 s more so that every client
  // is subscribed and idle before the first change.
  static void waitForClients(std::size_t clients,
                             const std::function<std::size_t()>& subscribed = subscribedClients);

  // Calls change R times a second for D seconds, each round at its own start time (start + round
  // / R), waits for the end of the last period and for the host's listeners, and measures wall
  // and CPU time over the whole.
  static Measured timedRounds(sim::SimTavel& host, int rate, int duration,
                              const std::function<void(const Round& round)>& change);

  // Returns once SIGINT or SIGTERM arrived on the descriptor of StopSignals::block().
  static void waitForStop(int signalFd);
};

}  // namespace halvor::kelo::bench
