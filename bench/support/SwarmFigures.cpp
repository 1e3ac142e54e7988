#include "SwarmFigures.h"

#include <algorithm>

namespace halvor::bench {

SwarmFigures::Latency SwarmFigures::latency(std::vector<float> latenciesMs) {
  Latency latency;
  latency.p50Ms = SubscriberSwarm::percentile(latenciesMs, 0.50);
  latency.p99Ms = SubscriberSwarm::percentile(latenciesMs, 0.99);
  latency.maxMs =
      latenciesMs.empty() ? 0 : *std::max_element(latenciesMs.begin(), latenciesMs.end());
  return latency;
}

SwarmFigures::Spread SwarmFigures::spread(const std::vector<std::size_t>& framesPerClient) {
  if (framesPerClient.empty()) return {};
  const auto [least, most] = std::minmax_element(framesPerClient.begin(), framesPerClient.end());
  return {*least, *most};
}

std::size_t SwarmFigures::live(const SwarmCounts& counts) {
  return counts.subscribed - std::min(counts.subscribed, counts.closed);
}

void SwarmFigures::printHead(std::ostream& out, int clients, const SwarmCounts& counts,
                             std::size_t frames, const std::vector<std::size_t>& framesPerClient) {
  const Spread perClient = spread(framesPerClient);
  out << "clients " << clients << " subscribed " << counts.subscribed << " live " << live(counts)
      << " frames_received " << frames << " per_client_min " << perClient.least
      << " per_client_max " << perClient.most;
}

void SwarmFigures::printLatency(std::ostream& out, const std::vector<float>& latenciesMs) {
  const Latency figures = latency(latenciesMs);
  out << " p50_ms " << figures.p50Ms << " p99_ms " << figures.p99Ms << " max_ms " << figures.maxMs
      << std::endl;
}

std::int64_t SwarmFigures::microsecondsOf(Clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
}

bool SwarmFigures::quiet(std::size_t frames, Clock::time_point lastFrame, int quietSeconds) {
  return frames > 0 && Clock::now() - lastFrame > std::chrono::seconds(quietSeconds);
}

bool SwarmFigures::quietOrGone(const SwarmCounts& counts, std::size_t clients, std::size_t frames,
                               Clock::time_point lastFrame, int quietSeconds) {
  const bool settled = counts.subscribed + counts.failed >= clients;
  return quiet(frames, lastFrame, quietSeconds) || (settled && counts.subscribed <= counts.closed);
}

}  // namespace halvor::bench
