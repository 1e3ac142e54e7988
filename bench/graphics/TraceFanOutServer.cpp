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

#include <chrono>
#include <iostream>
#include <random>
#include <string>

#include "EmbeddedHost.h"
#include "HostLoop.h"
#include "ServerSteps.h"
#include "sim/Fixture.h"
#include "sim/SimTavel.h"
#include "sim/models/GraphicsSignals.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

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

void seedSpectrum(sim::SimTavel& host, int points, std::mt19937& random) {
  ServerSteps::act(host, tavelabi::CCRUD::Create, "/system/graphics/exSpectrumFrequency",
                   Resource(GraphicsSignals::spectrumFrequency(points)));
  ServerSteps::act(host, tavelabi::CCRUD::Create, "/system/graphics/exSpectrumMaskAmplitude",
                   Resource(GraphicsSignals::maskAmplitude()));
  ServerSteps::act(host, tavelabi::CCRUD::Create, "/system/graphics/exSpectrumMaskFrequency",
                   Resource(GraphicsSignals::maskFrequency()));
  Resource amplitude = GraphicsSignals::spectrumScale();
  amplitude.values["value"] = GraphicsSignals::spectrumAmplitude(0.0, points, random);
  ServerSteps::act(host, tavelabi::CCRUD::Create, kAmplitude, amplitude);
}

// A new trace and the stamp of its change, in one Update.
void change(sim::SimTavel& host, double seconds, int points, std::mt19937& random) {
  Resource update("value", GraphicsSignals::spectrumAmplitude(seconds, points, random));
  update.values["centerFrequency"] = ResourceValue(ServerSteps::stampMicroseconds());
  ServerSteps::act(host, tavelabi::CCRUD::Update, kAmplitude, update);
}

bool parse(int argc, char** argv, Options& options) {
  const bool known = ServerSteps::parse(argc, argv,
                                        {{"--clients", &options.clients},
                                         {"--points", &options.points},
                                         {"--rate", &options.rate},
                                         {"--duration", &options.duration},
                                         {"--threads", &options.threads}});
  return known && options.clients > 0 && options.points > 0 && options.rate > 0;
}

int run(int argc, char** argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::cerr << "usage: bench-graphics-spectrum-server --clients N [--points P] [--rate R] "
                 "[--duration D] [--threads T]\n";
    return 2;
  }
  const int signalFd = StopSignals::block();
  EmbeddedHost embedded(
      ServerSteps::hostOptions("bench-graphics-spectrum-server", options.threads));
  sim::SimTavel& host = embedded.host();
  ServerSteps::openBenchSession(host);
  // The host's own graphics model stands still, so that every change is one of this benchmark.
  sim::Fixture still;
  Json::Value section;
  section["moving"] = false;
  still.sections.emplace_back("graphics", section);
  host.applyFixture(still);
  std::mt19937 random(20261123);
  seedSpectrum(host, options.points, random);
  if (!embedded.start()) return 1;
  const HostLoop hostLoop(embedded);

  std::cout << "ready " << embedded.application().getListeners()[0].toPort() << std::endl;
  ServerSteps::waitForClients(static_cast<std::size_t>(options.clients));
  std::cout << "connected " << ServerSteps::subscribedClients() << std::endl;

  long changes = 0;
  const ServerSteps::Measured measured = ServerSteps::timedRounds(
      host, options.rate, options.duration, [&](const ServerSteps::Round& round) {
        change(host,
               std::chrono::duration<double>(ServerSteps::Clock::now() - round.loopStart).count(),
               options.points, random);
        ++changes;
      });
  std::cout << "updated " << changes << " points " << options.points << " wall_s "
            << measured.wallSeconds << " cpu_s " << measured.cpuSeconds << " cpu_percent "
            << measured.cpuPercent() << std::endl;

  ServerSteps::waitForStop(signalFd);
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
