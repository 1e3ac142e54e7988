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

#include "ClientArguments.h"
#include "SubscriberSwarm.h"
#include "SwarmFigures.h"
#include "halvor/protobuf/Resource.pb.h"

using halvor::bench::Clock;
using halvor::bench::SubscriberSwarm;
using halvor::bench::SwarmFigures;

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
  halvor::bench::ClientArguments arguments;
  if (!halvor::bench::ClientArguments::parse(argc, argv, {}, arguments)) {
    std::cerr << "usage: bench-ws-fanout-client --port P --clients N [--session S]\n";
    return 2;
  }
  halvor::bench::SwarmOptions& options = arguments.swarm;
  options.target = "/1/ws/resource?path=%2Fbench%2Ffanout";

  Totals totals;
  totals.lastSequence.assign(options.clients, 0);
  totals.latencyMs.reserve(options.clients * 600);
  const halvor::bench::SwarmCounts counts = SubscriberSwarm::run(
      options,
      [&](std::size_t client, std::string_view bytes, bool binary, Clock::time_point received) {
        record(totals, client, bytes, binary, received);
      },
      [&](const halvor::bench::SwarmCounts&) {
        return SwarmFigures::quiet(totals.frames, totals.lastPush, arguments.quietSeconds);
      });

  const std::size_t live = SwarmFigures::live(counts);
  const std::size_t expected = live * static_cast<std::size_t>(totals.maxSequence);
  std::cout << "clients " << arguments.clients << " subscribed " << counts.subscribed << " closed "
            << counts.closed << " updates " << totals.maxSequence << " frames_expected " << expected
            << " frames_received " << totals.frames << " out_of_order " << totals.outOfOrder;
  SwarmFigures::printLatency(std::cout, totals.latencyMs);
  return 0;
}
