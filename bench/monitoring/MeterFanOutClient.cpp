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
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "ClientArguments.h"
#include "SubscriberSwarm.h"
#include "SwarmFigures.h"
#include "halvor/protobuf/Monitoring.pb.h"

using halvor::bench::Clock;
using halvor::bench::SubscriberSwarm;
using halvor::bench::SwarmFigures;

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
  totals.latencyMs.push_back(
      static_cast<float>((SwarmFigures::microsecondsOf(received) - sent) / 1e3));
  ++totals.frames;
  ++totals.framesPerClient[client];
  totals.lastFrame = Clock::now();
  std::int64_t& last = totals.lastStamp[client][meter.path().value()];
  if (sent <= last) ++totals.repeatedOrOld;
  last = sent;
}

}  // namespace

int main(int argc, char** argv) {
  halvor::bench::ClientArguments arguments;
  std::string group;
  const bool parsed = halvor::bench::ClientArguments::parse(
      argc, argv, {{"--group", [&](const std::string& value) { group = value; }}}, arguments);
  if (!parsed || group.empty()) {
    std::cerr << "usage: bench-monitoring-meter-client --port P --clients N --group PATH "
                 "[--session S] [--quiet-seconds Q]\n";
    return 2;
  }
  halvor::bench::SwarmOptions& options = arguments.swarm;
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
        return SwarmFigures::quietOrGone(swarm, options.clients, totals.frames, totals.lastFrame,
                                         arguments.quietSeconds);
      });

  SwarmFigures::printHead(std::cout, arguments.clients, counts, totals.frames,
                          totals.framesPerClient);
  std::cout << " repeated_or_old " << totals.repeatedOrOld << " undecodable " << totals.undecodable;
  SwarmFigures::printLatency(std::cout, totals.latencyMs);
  return 0;
}
