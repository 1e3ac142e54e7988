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
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "EmbeddedHost.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

using Clock = std::chrono::steady_clock;
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

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

std::size_t subscribedClients() {
  std::size_t total = 0;
  for (const auto& entry : web::app().getPlugin<ResourceListenerManager>()->clientCounts()) {
    total += entry.second;
  }
  return total;
}

double stampNow() {
  return static_cast<double>(
      std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
          .count());
}

void create(sim::SimTavel& host, const std::string& path, const Resource& resource) {
  tavelabi::ResourceAction action(tavelabi::CCRUD::Create, path, resource, nullptr, "");
  host.processInternalAction(action);
}

// The collection, its groups and their meters, each meter with the keys of a real one.
std::vector<std::string> seedMeters(sim::SimTavel& host, const Options& options) {
  std::vector<std::vector<std::string>> groupMeters(static_cast<std::size_t>(options.groups));
  std::vector<std::string> meters;
  for (int m = 0; m < options.meters; ++m) {
    const int group = m % options.groups;
    const std::string groupPath = std::string(kCollection) + "/group" + std::to_string(group);
    const std::string path = groupPath + "/meter" + std::to_string(m);
    Resource meter{ResourceValue(stampNow())};
    meter.addValue("guid", ResourceValue("bench-meter-" + std::to_string(m)));
    meter.addValue("path", ResourceValue(path));
    meter.addValue("label", ResourceValue("Meter " + std::to_string(m)));
    meter.addValue("units", ResourceValue(std::string("dBm")));
    meter.addValue("min", ResourceValue(0.0));
    meter.addValue("max", ResourceValue(1000.0));
    meter.addValue("digitsToDisplay", ResourceValue(1));
    meter.addValue("deviceName", ResourceValue(std::string("Exciter")));
    meter.addValue("deviceId", ResourceValue(std::string("1")));
    create(host, path, meter);
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
    create(host, path, resource);
    groupPaths.emplace_back(path);
  }
  Resource collection{ResourceValue(groupPaths)};
  collection.addValue("path", ResourceValue(std::string(kCollection)));
  collection.addValue("label", ResourceValue(std::string("Bench meters")));
  create(host, kCollection, collection);
  return meters;
}

void move(sim::SimTavel& host, const std::string& path) {
  tavelabi::ResourceAction action(tavelabi::CCRUD::Update, path,
                                  Resource(ResourceValue(stampNow())), nullptr, "");
  host.processInternalAction(action);
}

bool parse(int argc, char** argv, Options& options) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    const int value = std::atoi(argv[i + 1]);
    if (option == "--clients")
      options.clients = value;
    else if (option == "--meters")
      options.meters = value;
    else if (option == "--groups")
      options.groups = value;
    else if (option == "--rate")
      options.rate = value;
    else if (option == "--duration")
      options.duration = value;
    else if (option == "--threads")
      options.threads = value;
    else if (option == "--burst")
      options.burst = value != 0;
    else
      return false;
  }
  return options.clients > 0 && options.meters > 0 && options.groups > 0 && options.rate > 0;
}

int run(int argc, char** argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::cerr << "usage: bench-monitoring-meter-server --clients N [--meters M] [--groups G] "
                 "[--rate R] [--duration D] [--threads T] [--burst 1]\n";
    return 2;
  }
  const int signalFd = StopSignals::block();
  EmbeddedHost::Options hostOptions;
  hostOptions.name = "bench-monitoring-meter-server";
  hostOptions.ioThreads = options.threads;
  hostOptions.debugLog = false;
  EmbeddedHost embedded(hostOptions);
  sim::SimTavel& host = embedded.host();
  host.addUser({"bench", "bench", "read-only", {}});
  host.openSession("bench", "bench-session");
  const std::vector<std::string> meters = seedMeters(host, options);
  if (!embedded.start()) return 1;

  // The host's loop: the plug-in's timed tasks, about 100 passes a second.
  std::atomic<bool> stopping{false};
  std::thread hostLoop([&] {
    while (!stopping.load()) {
      embedded.runHostPass();
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  });

  std::cout << "ready " << embedded.application().getListeners()[0].toPort() << std::endl;
  const auto connectDeadline = Clock::now() + std::chrono::seconds(300);
  while (subscribedClients() < static_cast<std::size_t>(options.clients) &&
         Clock::now() < connectDeadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));  // every client subscribed and idle
  std::cout << "connected " << subscribedClients() << std::endl;

  const double cpuBefore = cpuSeconds();
  const auto start = Clock::now();
  const auto period = std::chrono::nanoseconds(1'000'000'000 / options.rate);
  const auto step = options.burst ? std::chrono::nanoseconds(0) : period / options.meters;
  long changes = 0;
  for (int round = 0; round < options.rate * options.duration; ++round) {
    const auto roundStart = start + round * period;
    for (std::size_t m = 0; m < meters.size(); ++m) {
      std::this_thread::sleep_until(roundStart + static_cast<long>(m) * step);
      move(host, meters[m]);
      ++changes;
    }
  }
  std::this_thread::sleep_until(start + options.rate * options.duration * period);
  host.waitForListeners();
  const double wall = std::chrono::duration<double>(Clock::now() - start).count();
  const double cpu = cpuSeconds() - cpuBefore;
  std::cout << "updated " << changes << " meters " << meters.size() << " wall_s " << wall
            << " cpu_s " << cpu << " cpu_percent " << 100.0 * cpu / wall << std::endl;

  while (!StopSignals::arrived(signalFd)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  stopping = true;
  hostLoop.join();
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
