// The plug-in inside the simulated host in one process, for the meter fan-out benchmark.
// It seeds a meter tree of its own (one collection "/bench/meters" of G groups, M meters in all,
// each meter below its group and holding every key a Meter is made of), waits until N clients
// are subscribed to the collection through "/1/ws/meters/group", then moves every meter R times
// a second for D seconds as the host, each Update stamping the meter's "value" (a Double) with
// the steady clock in whole microseconds, so that a client can compute the latency from the
// change to its receipt and tell the changes of one meter apart. The moves are spread evenly
// over each 1/R s period, one meter after the other; with --burst every meter moves at the start
// of the period at once, as a model that moves all its meters in one tick does. The host's loop
// runs the plug-in's timed tasks (heartbeat aging) as tavel-sim does.
//
// Usage: bench-monitoring-meter-server --clients N [--meters M] [--groups G] [--rate R]
//        [--duration D] [--threads T] [--burst 1]
// Prints "ready <http port>", then "connected ...", then "updated <changes> ..." once the last
// change has been dispatched; SIGINT or SIGTERM stops it.
#include <algorithm>
#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "EmbeddedHost.h"
#include "HostLoop.h"
#include "ServerSteps.h"
#include "sim/SimTavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

using tavelabi::Resource;
using tavelabi::ResourceValue;
constexpr const char* kCollection = "/bench/meters";

struct Options {
  int clients = 0;
  int meters = 100;
  int groups = 4;
  int rate = 5;
  int duration = 30;
  int threads = 2;
  bool burst = false;
};

// The collection, its groups and their meters, each meter with the keys of a real one.
std::vector<std::string> seedMeters(sim::SimTavel& host, const Options& options) {
  std::vector<std::vector<std::string>> groupMeters(static_cast<std::size_t>(options.groups));
  std::vector<std::string> meters;
  for (int m = 0; m < options.meters; ++m) {
    const int group = m % options.groups;
    const std::string groupPath = std::string(kCollection) + "/group" + std::to_string(group);
    const std::string path = groupPath + "/meter" + std::to_string(m);
    Resource meter{ResourceValue(ServerSteps::stampMicroseconds())};
    meter.addValue("guid", ResourceValue("bench-meter-" + std::to_string(m)));
    meter.addValue("path", ResourceValue(path));
    meter.addValue("label", ResourceValue("Meter " + std::to_string(m)));
    meter.addValue("units", ResourceValue(std::string("dBm")));
    meter.addValue("min", ResourceValue(0.0));
    meter.addValue("max", ResourceValue(1000.0));
    meter.addValue("digitsToDisplay", ResourceValue(1));
    meter.addValue("deviceName", ResourceValue(std::string("Exciter")));
    meter.addValue("deviceId", ResourceValue(std::string("1")));
    ServerSteps::act(host, tavelabi::CCRUD::Create, path, meter);
    groupMeters[static_cast<std::size_t>(group)].emplace_back(path);
    meters.push_back(path);
  }
  std::vector<std::string> groupPaths;
  for (int group = 0; group < options.groups; ++group) {
    const std::string path = std::string(kCollection) + "/group" + std::to_string(group);
    Resource resource{ResourceValue(groupMeters[static_cast<std::size_t>(group)])};
    resource.addValue("guid", ResourceValue("bench-group-" + std::to_string(group)));
    resource.addValue("path", ResourceValue(path));
    resource.addValue("label", ResourceValue("Group " + std::to_string(group)));
    ServerSteps::act(host, tavelabi::CCRUD::Create, path, resource);
    groupPaths.emplace_back(path);
  }
  Resource collection{ResourceValue(groupPaths)};
  collection.addValue("path", ResourceValue(std::string(kCollection)));
  collection.addValue("label", ResourceValue(std::string("Bench meters")));
  ServerSteps::act(host, tavelabi::CCRUD::Create, kCollection, collection);
  return meters;
}

void move(sim::SimTavel& host, const std::string& path) {
  ServerSteps::act(host, tavelabi::CCRUD::Update, path,
                   Resource(ResourceValue(ServerSteps::stampMicroseconds())));
}

bool parse(int argc, char** argv, Options& options) {
  int burst = 0;
  const bool known = ServerSteps::parse(argc, argv,
                                        {{"--clients", &options.clients},
                                         {"--meters", &options.meters},
                                         {"--groups", &options.groups},
                                         {"--rate", &options.rate},
                                         {"--duration", &options.duration},
                                         {"--threads", &options.threads},
                                         {"--burst", &burst}});
  options.burst = burst != 0;
  return known && options.clients > 0 && options.meters > 0 && options.groups > 0 &&
         options.rate > 0;
}

int run(int argc, char** argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::cerr << "usage: bench-monitoring-meter-server --clients N [--meters M] [--groups G] "
                 "[--rate R] [--duration D] [--threads T] [--burst 1]\n";
    return 2;
  }
  const int signalFd = StopSignals::block();
  EmbeddedHost embedded(ServerSteps::hostOptions("bench-monitoring-meter-server", options.threads));
  sim::SimTavel& host = embedded.host();
  ServerSteps::openBenchSession(host);
  const std::vector<std::string> meters = seedMeters(host, options);
  if (!embedded.start()) return 1;
  const HostLoop hostLoop(embedded);

  std::cout << "ready " << embedded.application().getListeners()[0].toPort() << std::endl;
  ServerSteps::waitForClients(static_cast<std::size_t>(options.clients));
  std::cout << "connected " << ServerSteps::subscribedClients() << std::endl;

  const auto period = std::chrono::nanoseconds(1'000'000'000 / options.rate);
  const auto step = options.burst ? std::chrono::nanoseconds(0) : period / options.meters;
  long changes = 0;
  const ServerSteps::Measured measured = ServerSteps::timedRounds(
      host, options.rate, options.duration, [&](const ServerSteps::Round& round) {
        for (std::size_t m = 0; m < meters.size(); ++m) {
          std::this_thread::sleep_until(round.start + static_cast<long>(m) * step);
          move(host, meters[m]);
          ++changes;
        }
      });
  std::cout << "updated " << changes << " meters " << meters.size() << " wall_s "
            << measured.wallSeconds << " cpu_s " << measured.cpuSeconds << " cpu_percent "
            << measured.cpuPercent() << std::endl;

  ServerSteps::waitForStop(signalFd);
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
