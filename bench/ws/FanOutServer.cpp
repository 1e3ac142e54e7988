// The plug-in inside the simulated host in one process, for the WebSocket fan-out benchmark.
// It waits until N clients are subscribed to "/bench/fanout" through "/1/ws/resource", measures
// its resident memory before and after they came, then updates the path R times a second for D
// seconds as the host, stamping each update with the steady clock so that clients can compute
// the latency from the host's Update to their receipt. The host's loop runs the plug-in's timed
// tasks (heartbeat aging) as tavel-sim does.
//
// Usage: bench-ws-fanout-server --clients N [--rate R] [--duration D] [--threads T]
// Prints "ready <http port>", then "connected ...", then "updated ..."; SIGINT or SIGTERM stops it.
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

#include "EmbeddedHost.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

using Clock = std::chrono::steady_clock;
constexpr const char* kPath = "/bench/fanout";

long rssKb() {
  std::ifstream status("/proc/self/status");
  std::string key;
  long value = 0;
  while (status >> key) {
    if (key == "VmRSS:") {
      status >> value;
      return value;
    }
  }
  return 0;
}

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

std::size_t subscribedClients() {
  const auto counts = web::app().getPlugin<ResourceListenerManager>()->clientCounts();
  auto found = counts.find(kPath);
  return found == counts.end() ? 0 : found->second;
}

void update(sim::SimTavel& host, int sequence) {
  const auto sent =
      std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
  tavelabi::Resource resource{tavelabi::ResourceValue(sequence)};
  resource.addValue("sentNs", tavelabi::ResourceValue(std::to_string(sent)));
  tavelabi::ResourceAction action(tavelabi::CCRUD::Update, kPath, resource, nullptr, "");
  host.processInternalAction(action);
}

int run(int argc, char** argv) {
  int threads = 2;
  int clients = 0;
  int rate = 20;
  int duration = 30;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    const int value = std::atoi(argv[i + 1]);
    if (option == "--threads")
      threads = value;
    else if (option == "--clients")
      clients = value;
    else if (option == "--rate")
      rate = value;
    else if (option == "--duration")
      duration = value;
    else {
      std::cerr << "usage: bench-ws-fanout-server --clients N [--rate R] [--duration D] "
                   "[--threads T]\n";
      return 2;
    }
  }
  if (clients <= 0 || rate <= 0) return 2;

  const int signalFd = StopSignals::block();
  EmbeddedHost::Options options;
  options.name = "bench-ws-fanout-server";
  options.ioThreads = threads;
  options.debugLog = false;
  EmbeddedHost embedded(options);
  sim::SimTavel& host = embedded.host();
  host.addUser({"bench", "bench", "read-only", {}});
  host.openSession("bench", "bench-session");
  {
    tavelabi::ResourceAction create(tavelabi::CCRUD::Create, kPath,
                                    tavelabi::Resource(tavelabi::ResourceValue(0)), nullptr, "");
    host.processInternalAction(create);
  }
  web::HttpAppFramework& application = embedded.application();
  if (!embedded.start()) return 1;

  // The host's loop: the plug-in's timed tasks, about 100 passes a second.
  std::atomic<bool> stopping{false};
  std::thread hostLoop([&] {
    while (!stopping.load()) {
      embedded.runHostPass();
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  });

  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const long rssBase = rssKb();
  std::cout << "ready " << application.getListeners()[0].toPort() << std::endl;

  const auto connectDeadline = Clock::now() + std::chrono::seconds(300);
  while (subscribedClients() < static_cast<std::size_t>(clients) &&
         Clock::now() < connectDeadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));  // idle, every client subscribed
  const long rssConnected = rssKb();
  const std::size_t subscribed = subscribedClients();
  std::cout << "connected " << subscribed << " rss_base_kb " << rssBase << " rss_connected_kb "
            << rssConnected << " kb_per_connection "
            << (subscribed ? static_cast<double>(rssConnected - rssBase) / subscribed : 0.0)
            << std::endl;

  const double cpuBefore = cpuSeconds();
  const auto wallStart = Clock::now();
  const auto period = std::chrono::nanoseconds(1'000'000'000 / rate);
  const int updates = rate * duration;
  auto next = wallStart;
  for (int sequence = 1; sequence <= updates; ++sequence) {
    next += period;
    update(host, sequence);
    std::this_thread::sleep_until(next);
  }
  host.waitForListeners();
  const double wall = std::chrono::duration<double>(Clock::now() - wallStart).count();
  const double cpu = cpuSeconds() - cpuBefore;
  std::cout << "updated " << updates << " wall_s " << wall << " cpu_s " << cpu << " cpu_percent "
            << 100.0 * cpu / wall << " rss_kb " << rssKb() << std::endl;

  while (!StopSignals::arrived(signalFd)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  stopping = true;
  hostLoop.join();
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
