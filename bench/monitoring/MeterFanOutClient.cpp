// The client side of the meter fan-out benchmark: N subscribers of one meter group through
// "/1/ws/meters/group" (bench/support/SubscriberSwarm). The first frame of each subscriber is
// empty; every later one is a Meter whose value is the steady-clock time of its change in
// microseconds. The client records the latency of every frame and, per subscriber and meter,
// that the stamps only grow (no change twice, none out of order).
//
// Usage: bench-monitoring-meter-client --port P --clients N --group PATH [--session S]
//        [--quiet-seconds Q]
// Prints "subscribed N" once every first frame arrived, and a summary when no frame has come for
// Q seconds (default 4) after the first one, or when every subscriber failed or was closed.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "SubscriberSwarm.h"
#include "halvor/protobuf/Monitoring.pb.h"

using halvor::bench::Clock;
using halvor::bench::SubscriberSwarm;

namespace {

struct Totals {
  std::size_t frames = 0;
  std::size_t undecodable = 0;
  std::size_t repeatedOrOld = 0;
  std::vector<float> latencyMs;
  std::vector<std::size_t> framesPerClient;
  std::vector<std::map<std::string, std::int64_t>> lastStamp;  // per client, per meter path
  Clock::time_point lastFrame{};
};

std::int64_t microsecondsOf(Clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
}

void record(Totals& totals, std::size_t client, std::string_view bytes, bool binary,
            Clock::time_point received) {
  halvor::protobuf::Meter meter;
  if (!binary || !meter.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())) ||
      meter.value().values().count("value") == 0) {
    ++totals.undecodable;
    return;
  }
  const auto sent =
      static_cast<std::int64_t>(meter.value().values().at("value").doublevalue().value());
  totals.latencyMs.push_back(static_cast<float>((microsecondsOf(received) - sent) / 1e3));
  ++totals.frames;
  ++totals.framesPerClient[client];
  totals.lastFrame = Clock::now();
  std::int64_t& last = totals.lastStamp[client][meter.path().value()];
  if (sent <= last) ++totals.repeatedOrOld;
  last = sent;
}

}  // namespace

int main(int argc, char** argv) {
  halvor::bench::SwarmOptions options;
  options.session = "bench-session";
  int clients = 0;
  int quietSeconds = 4;
  std::string group;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--port")
      options.port = std::atoi(argv[i + 1]);
    else if (option == "--clients")
      clients = std::atoi(argv[i + 1]);
    else if (option == "--group")
      group = argv[i + 1];
    else if (option == "--session")
      options.session = argv[i + 1];
    else if (option == "--quiet-seconds")
      quietSeconds = std::atoi(argv[i + 1]);
  }
  if (options.port == 0 || clients <= 0 || group.empty()) {
    std::cerr << "usage: bench-monitoring-meter-client --port P --clients N --group PATH "
                 "[--session S] [--quiet-seconds Q]\n";
    return 2;
  }
  options.clients = static_cast<std::size_t>(clients);
  options.target = "/1/ws/meters/group?path=" + SubscriberSwarm::urlEncoded(group);

  Totals totals;
  totals.framesPerClient.assign(options.clients, 0);
  totals.lastStamp.resize(options.clients);
  totals.latencyMs.reserve(options.clients * 20000);
  const halvor::bench::SwarmCounts counts = SubscriberSwarm::run(
      options,
      [&](std::size_t client, std::string_view bytes, bool binary, Clock::time_point received) {
        record(totals, client, bytes, binary, received);
      },
      [&](const halvor::bench::SwarmCounts& swarm) {
        // Done when the frames have stopped, or when no subscriber is left to wait for.
        const bool quiet = totals.frames > 0 &&
                           Clock::now() - totals.lastFrame > std::chrono::seconds(quietSeconds);
        const bool settled = swarm.subscribed + swarm.failed >= options.clients;
        return quiet || (settled && swarm.subscribed <= swarm.closed);
      });

  const std::size_t live = counts.subscribed - std::min(counts.subscribed, counts.closed);
  std::vector<std::size_t> perClient = totals.framesPerClient;
  std::sort(perClient.begin(), perClient.end());
  std::vector<float> latencies = totals.latencyMs;
  const double p50 = SubscriberSwarm::percentile(latencies, 0.50);
  const double p99 = SubscriberSwarm::percentile(latencies, 0.99);
  const double max = latencies.empty() ? 0 : *std::max_element(latencies.begin(), latencies.end());
  std::cout << "clients " << clients << " subscribed " << counts.subscribed << " live " << live
            << " frames_received " << totals.frames << " per_client_min " << perClient.front()
            << " per_client_max " << perClient.back() << " repeated_or_old " << totals.repeatedOrOld
            << " undecodable " << totals.undecodable << " p50_ms " << p50 << " p99_ms " << p99
            << " max_ms " << max << std::endl;
  return 0;
}
