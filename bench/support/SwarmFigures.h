#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
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

  // The first fields of a client's summary line: "clients N subscribed S live L frames_received
  // F per_client_min A per_client_max B".
  static void printHead(std::ostream& out, int clients, const SwarmCounts& counts,
                        std::size_t frames, const std::vector<std::size_t>& framesPerClient);
  // Its last fields, " p50_ms X p99_ms Y max_ms Z", and the end of the line.
  static void printLatency(std::ostream& out, const std::vector<float>& latenciesMs);

  static std::int64_t microsecondsOf(Clock::time_point time);

  // Frames have come, and none for quietSeconds since the last one.
  static bool quiet(std::size_t frames, Clock::time_point lastFrame, int quietSeconds);
  // Quiet, or every subscriber connected or failed and each one subscribed has been closed.
  static bool quietOrGone(const SwarmCounts& counts, std::size_t clients, std::size_t frames,
                          Clock::time_point lastFrame, int quietSeconds);
};

}  // namespace halvor::bench
