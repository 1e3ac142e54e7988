#include "ServerSteps.h"

#include <sys/resource.h>

#include <cstdlib>
#include <thread>

#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo::bench {

bool ServerSteps::parse(int argc, char** argv, const std::map<std::string, int*>& options) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const auto found = options.find(argv[i]);
    if (found == options.end()) return false;
    *found->second = std::atoi(argv[i + 1]);
  }
  return true;
}

EmbeddedHost::Options ServerSteps::hostOptions(const std::string& name, int ioThreads) {
  EmbeddedHost::Options options;
  options.name = name;
  options.ioThreads = ioThreads;
  options.debugLog = false;  // no Debug line per ping
  return options;
}

void ServerSteps::openBenchSession(sim::SimTavel& host) {
  host.addUser({"bench", "bench", "read-only", {}});
  host.openSession("bench", "bench-session");
}

void ServerSteps::act(sim::SimTavel& host, tavelabi::CCRUD verb, const std::string& path,
                      const tavelabi::Resource& resource) {
  tavelabi::ResourceAction action(verb, path, resource, nullptr, "");
  host.processInternalAction(action);
}

double ServerSteps::cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double ServerSteps::stampMicroseconds() {
  return static_cast<double>(
      std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
          .count());
}

std::size_t ServerSteps::subscribedClients() {
  std::size_t total = 0;
  for (const auto& entry : web::app().getPlugin<ResourceListenerManager>()->clientCounts()) {
    total += entry.second;
  }
  return total;
}

void ServerSteps::waitForClients(std::size_t clients,
                                 const std::function<std::size_t()>& subscribed) {
  const auto deadline = Clock::now() + std::chrono::seconds(300);
  while (subscribed() < clients && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));
}

ServerSteps::Measured ServerSteps::timedRounds(
    sim::SimTavel& host, int rate, int duration,
    const std::function<void(const Round& round)>& change) {
  const double cpuBefore = cpuSeconds();
  const auto start = Clock::now();
  const auto period = std::chrono::nanoseconds(1'000'000'000 / rate);
  for (int round = 0; round < rate * duration; ++round) {
    const Round current{round, start, start + round * period};
    std::this_thread::sleep_until(current.start);
    change(current);
  }
  std::this_thread::sleep_until(start + rate * duration * period);
  host.waitForListeners();
  Measured measured;
  measured.wallSeconds = std::chrono::duration<double>(Clock::now() - start).count();
  measured.cpuSeconds = cpuSeconds() - cpuBefore;
  return measured;
}

void ServerSteps::waitForStop(int signalFd) {
  while (!StopSignals::arrived(signalFd)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

}  // namespace halvor::kelo::bench
