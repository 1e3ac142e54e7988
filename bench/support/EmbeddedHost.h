#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "kelo/Kelo.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"

namespace halvor::kelo::bench {

// The plug-in inside the simulated host, in one process, as the benchmarks run it: a scratch
// folder with a self-signed certificate and the plug-in's, web and log configuration files, a
// host with the plug-in's own user "kelo", and the start and stop sequence. Routes of the
// benchmark itself are registered on web::app() before start().
class EmbeddedHost {
 public:
  // The bearer token of GET /metrics in the plug-in's configuration.
  static constexpr const char* kMetricsToken = "kelo-bench-metrics-token";

  struct Options {
    std::string name;  // for the scratch folder and messages
    int ioThreads = 1;
    int httpPort = 0;  // 0: any free port
    int httpsPort = 0;
    bool debugLog = true;  // false keeps a Debug line per ping out of the log
  };

  // Throws std::runtime_error when the scratch folder or the certificate cannot be made.
  explicit EmbeddedHost(Options options);
  ~EmbeddedHost();
  EmbeddedHost(const EmbeddedHost&) = delete;
  EmbeddedHost& operator=(const EmbeddedHost&) = delete;

  sim::SimTavel& host() { return host_; }
  Kelo& plugin() { return *plugin_; }
  web::HttpAppFramework& application() { return web::app(); }

  // Creates and initialises the plug-in, then waits until both listeners serve. False, with a
  // line on standard error, when the plug-in fails or does not serve within 20 s.
  bool start();
  // One pass of the host's loop: the plug-in's timed tasks.
  void runHostPass();
  // Shuts the plug-in and the web application down; also done by the destructor.
  void stop();

 private:
  void writeFiles() const;

  Options options_;
  std::filesystem::path dir_;
  sim::SimTavel host_;
  std::unique_ptr<Kelo> plugin_;
};

// SIGINT and SIGTERM, blocked for every thread and read from a descriptor by the main loop,
// never in a handler. Call before any thread starts.
class StopSignals {
 public:
  static int block();
  static bool arrived(int descriptor);
};

}  // namespace halvor::kelo::bench
