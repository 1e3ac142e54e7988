#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "SubscriberSwarm.h"

namespace halvor::bench {

// The figures the fan-out benchmark clients compute alike: the latency summary, the spread of
// frames over subscribers, and when a run is over.
class SwarmFigures {
 public:
  struct Latency {
    double p50Ms = 0;
    double p99Ms = 0;
    double maxMs = 0;
  };
  struct Spread {
    std::size_t least = 0;
    std::size_t most = 0;
  };

  // Median, 99th percentile and maximum of the latencies (a copy is reordered).
  static Latency latency(std::vector<float> latenciesMs);
  // The fewest and the most frames one subscriber received (0 and 0 for no subscriber).
  static Spread spread(const std::vector<std::size_t>& framesPerClient);
  // Subscribers whose socket is still open.
  static std::size_t live(const SwarmCounts& counts);

  static std::int64_t microsecondsOf(Clock::time_point time);

  // Frames have come, and none for quietSeconds since the last one.
  static bool quiet(std::size_t frames, Clock::time_point lastFrame, int quietSeconds);
  // Quiet, or every subscriber connected or failed and each one subscribed has been closed.
  static bool quietOrGone(const SwarmCounts& counts, std::size_t clients, std::size_t frames,
                          Clock::time_point lastFrame, int quietSeconds);
};

}  // namespace halvor::bench
