// The plug-in inside the simulated host in one process, for the WebSocket fan-out benchmark.
// It waits until N clients are subscribed to "/bench/fanout" through "/1/ws/resource", measures
// its resident memory before and after they came, then updates the path R times a second for D
// seconds as the host, stamping each update with the steady clock so that clients can compute
// the latency from the host's Update to their receipt. The host's loop runs the plug-in's timed
// tasks (heartbeat aging) as tavel-sim does.
//
// Usage: bench-ws-fanout-server --clients N [--rate R] [--duration D] [--threads T]
// Prints "ready <http port>", then "connected ...", then "updated ..."; SIGINT or SIGTERM stops it.
#include <chrono>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

#include "EmbeddedHost.h"
#include "HostLoop.h"
#include "ServerSteps.h"
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
  ServerSteps::act(host, tavelabi::CCRUD::Update, kPath, resource);
}

int run(int argc, char** argv) {
  int threads = 2;
  int clients = 0;
  int rate = 20;
  int duration = 30;
  if (!ServerSteps::parse(argc, argv,
                          {{"--threads", &threads},
                           {"--clients", &clients},
                           {"--rate", &rate},
                           {"--duration", &duration}})) {
    std::cerr << "usage: bench-ws-fanout-server --clients N [--rate R] [--duration D] "
                 "[--threads T]\n";
    return 2;
  }
  if (clients <= 0 || rate <= 0) return 2;

  const int signalFd = StopSignals::block();
  EmbeddedHost embedded(ServerSteps::hostOptions("bench-ws-fanout-server", threads));
  sim::SimTavel& host = embedded.host();
  ServerSteps::openBenchSession(host);
  ServerSteps::act(host, tavelabi::CCRUD::Create, kPath,
                   tavelabi::Resource(tavelabi::ResourceValue(0)));
  web::HttpAppFramework& application = embedded.application();
  if (!embedded.start()) return 1;
  const HostLoop hostLoop(embedded);

  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const long rssBase = rssKb();
  std::cout << "ready " << application.getListeners()[0].toPort() << std::endl;

  ServerSteps::waitForClients(static_cast<std::size_t>(clients), subscribedClients);
  const long rssConnected = rssKb();
  const std::size_t subscribed = subscribedClients();
  std::cout << "connected " << subscribed << " rss_base_kb " << rssBase << " rss_connected_kb "
            << rssConnected << " kb_per_connection "
            << (subscribed ? static_cast<double>(rssConnected - rssBase) / subscribed : 0.0)
            << std::endl;

  const int updates = rate * duration;
  const ServerSteps::Measured measured = ServerSteps::timedRounds(
      host, rate, duration,
      [&](const ServerSteps::Round& round) { update(host, round.index + 1); });
  std::cout << "updated " << updates << " wall_s " << measured.wallSeconds << " cpu_s "
            << measured.cpuSeconds << " cpu_percent " << measured.cpuPercent() << " rss_kb "
            << rssKb() << std::endl;

  ServerSteps::waitForStop(signalFd);
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
