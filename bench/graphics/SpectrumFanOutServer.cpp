// The plug-in inside the simulated host in one process, for the spectrum fan-out benchmark.
// It seeds the four spectrum channels with a trace of P points (the graphics model's signals),
// waits until N clients are subscribed through "/1/ws/graphics/spectrum", then writes a new trace
// into "/system/graphics/exSpectrumAmplitude" R times a second for D seconds as the host. Each
// Update also stamps the scale key "centerFrequency" with the steady clock in whole
// microseconds; every push reads the channels again, so the Spectrum a client gets carries the
// stamp of the change it was made for, and the client computes the latency from it. The host's
// loop runs the plug-in's timed tasks (heartbeat aging) as tavel-sim does; the host's own
// graphics model is stopped by a fixture.
//
// Usage: bench-graphics-spectrum-server --clients N [--points P] [--rate R] [--duration D]
//        [--threads T]
// Prints "ready <http port>", then "connected ...", then "updated <changes> ..." once the last
// change has been dispatched; SIGINT or SIGTERM stops it.
#include <json/value.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "EmbeddedHost.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/Fixture.h"
#include "sim/SimTavel.h"
#include "sim/models/GraphicsSignals.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

using Clock = std::chrono::steady_clock;
using sim::GraphicsSignals;
using tavelabi::Resource;
using tavelabi::ResourceValue;

constexpr const char* kAmplitude = "/system/graphics/exSpectrumAmplitude";

struct Options {
  int clients = 0;
  int points = 8192;
  int rate = 10;
  int duration = 30;
  int threads = 1;
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

void hostAction(sim::SimTavel& host, tavelabi::CCRUD verb, const std::string& path,
                const Resource& resource) {
  tavelabi::ResourceAction action(verb, path, resource, nullptr, "");
  host.processInternalAction(action);
}

void seedSpectrum(sim::SimTavel& host, int points, std::mt19937& random) {
  hostAction(host, tavelabi::CCRUD::Create, "/system/graphics/exSpectrumFrequency",
             Resource(GraphicsSignals::spectrumFrequency(points)));
  hostAction(host, tavelabi::CCRUD::Create, "/system/graphics/exSpectrumMaskAmplitude",
             Resource(GraphicsSignals::maskAmplitude()));
  hostAction(host, tavelabi::CCRUD::Create, "/system/graphics/exSpectrumMaskFrequency",
             Resource(GraphicsSignals::maskFrequency()));
  Resource amplitude = GraphicsSignals::spectrumScale();
  amplitude.values["value"] = GraphicsSignals::spectrumAmplitude(0.0, points, random);
  hostAction(host, tavelabi::CCRUD::Create, kAmplitude, amplitude);
}

// A new trace and the stamp of its change, in one Update.
void change(sim::SimTavel& host, double seconds, int points, std::mt19937& random) {
  Resource update("value", GraphicsSignals::spectrumAmplitude(seconds, points, random));
  update.values["centerFrequency"] = ResourceValue(stampNow());
  hostAction(host, tavelabi::CCRUD::Update, kAmplitude, update);
}

bool parse(int argc, char** argv, Options& options) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    const int value = std::atoi(argv[i + 1]);
    if (option == "--clients") {
      options.clients = value;
    } else if (option == "--points") {
      options.points = value;
    } else if (option == "--rate") {
      options.rate = value;
    } else if (option == "--duration") {
      options.duration = value;
    } else if (option == "--threads") {
      options.threads = value;
    } else {
      return false;
    }
  }
  return options.clients > 0 && options.points > 0 && options.rate > 0;
}

int run(int argc, char** argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::cerr << "usage: bench-graphics-spectrum-server --clients N [--points P] [--rate R] "
                 "[--duration D] [--threads T]\n";
    return 2;
  }
  const int signalFd = StopSignals::block();
  EmbeddedHost::Options hostOptions;
  hostOptions.name = "bench-graphics-spectrum-server";
  hostOptions.ioThreads = options.threads;
  hostOptions.debugLog = false;
  EmbeddedHost embedded(hostOptions);
  sim::SimTavel& host = embedded.host();
  host.addUser({"bench", "bench", "read-only", {}});
  host.openSession("bench", "bench-session");
  // The host's own graphics model stands still, so that every change is one of this benchmark.
  sim::Fixture still;
  Json::Value section;
  section["moving"] = false;
  still.sections.emplace_back("graphics", section);
  host.applyFixture(still);
  std::mt19937 random(20261123);
  seedSpectrum(host, options.points, random);
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
  long changes = 0;
  for (int round = 0; round < options.rate * options.duration; ++round) {
    std::this_thread::sleep_until(start + round * period);
    change(host, std::chrono::duration<double>(Clock::now() - start).count(), options.points,
           random);
    ++changes;
  }
  std::this_thread::sleep_until(start + options.rate * options.duration * period);
  host.waitForListeners();
  const double wall = std::chrono::duration<double>(Clock::now() - start).count();
  const double cpu = cpuSeconds() - cpuBefore;
  std::cout << "updated " << changes << " points " << options.points << " wall_s " << wall
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
