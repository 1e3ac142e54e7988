// The client side of the WebSocket fan-out benchmark: N subscribers of one path through
// "/1/ws/resource" (bench/support/SubscriberSwarm). Each push carries the host's sequence number
// and the steady-clock time of its Update; the client records the latency of every frame.
//
// Usage: bench-ws-fanout-client --port P --clients N [--session S] [--quiet-seconds Q]
// Prints "subscribed N" once every first message arrived, and a summary when no push has come
// for Q seconds (default 4) after the first one.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "SubscriberSwarm.h"
#include "halvor/protobuf/Resource.pb.h"

using halvor::bench::Clock;
using halvor::bench::SubscriberSwarm;

namespace {

struct Totals {
  std::size_t frames = 0;
  std::int64_t maxSequence = 0;
  std::vector<float> latencyMs;
  Clock::time_point lastPush{};
  std::vector<std::int64_t> lastSequence;  // per client, to count gaps
  std::size_t outOfOrder = 0;
};

std::int64_t nanosecondsOf(Clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

void record(Totals& totals, std::size_t client, std::string_view bytes, bool binary,
            Clock::time_point received) {
  halvor::protobuf::Resource resource;
  if (!binary || !resource.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) return;
  const auto& values = resource.values();
  const auto sequence = values.at("value").intvalue().value();
  const auto sent = std::stoll(values.at("sentNs").stringvalue().value());
  totals.latencyMs.push_back(static_cast<float>((nanosecondsOf(received) - sent) / 1e6));
  ++totals.frames;
  totals.maxSequence = std::max<std::int64_t>(totals.maxSequence, sequence);
  if (sequence <= totals.lastSequence[client]) ++totals.outOfOrder;
  totals.lastSequence[client] = sequence;
  totals.lastPush = Clock::now();
}

}  // namespace

int main(int argc, char** argv) {
  halvor::bench::SwarmOptions options;
  options.session = "bench-session";
  options.target = "/1/ws/resource?path=%2Fbench%2Ffanout";
  int clients = 0;
  int quietSeconds = 4;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--port")
      options.port = std::atoi(argv[i + 1]);
    else if (option == "--clients")
      clients = std::atoi(argv[i + 1]);
    else if (option == "--session")
      options.session = argv[i + 1];
    else if (option == "--quiet-seconds")
      quietSeconds = std::atoi(argv[i + 1]);
  }
  if (options.port == 0 || clients <= 0) {
    std::cerr << "usage: bench-ws-fanout-client --port P --clients N [--session S]\n";
    return 2;
  }
  options.clients = static_cast<std::size_t>(clients);

  Totals totals;
  totals.lastSequence.assign(options.clients, 0);
  totals.latencyMs.reserve(options.clients * 600);
  const halvor::bench::SwarmCounts counts = SubscriberSwarm::run(
      options,
      [&](std::size_t client, std::string_view bytes, bool binary, Clock::time_point received) {
        record(totals, client, bytes, binary, received);
      },
      [&](const halvor::bench::SwarmCounts&) {
        return totals.frames > 0 &&
               Clock::now() - totals.lastPush > std::chrono::seconds(quietSeconds);
      });

  const std::size_t live = counts.subscribed - std::min(counts.subscribed, counts.closed);
  const std::size_t expected = live * static_cast<std::size_t>(totals.maxSequence);
  std::vector<float> latencies = totals.latencyMs;
  const double p50 = SubscriberSwarm::percentile(latencies, 0.50);
  const double p99 = SubscriberSwarm::percentile(latencies, 0.99);
  const double max = latencies.empty() ? 0 : *std::max_element(latencies.begin(), latencies.end());
  std::cout << "clients " << clients << " subscribed " << counts.subscribed << " closed "
            << counts.closed << " updates " << totals.maxSequence << " frames_expected " << expected
            << " frames_received " << totals.frames << " out_of_order " << totals.outOfOrder
            << " p50_ms " << p50 << " p99_ms " << p99 << " max_ms " << max << std::endl;
  return 0;
}
