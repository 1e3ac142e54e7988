#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kelo/Kelo.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"

namespace halvor::kelo::test {

struct KeloTestServerOptions {
  // The plug-in's own user in the host and in its configuration file.
  std::string userName = "kelo";
  std::string password = "kelo-test-secret";
  std::string userRole = "administrator";
  // The password written into the configuration file; the user's own one when empty.
  std::string configuredPassword;
  std::vector<std::string> localhostIps = {"127.0.0.1"};
  bool bypassCors = false;
  std::string corsOrigin;
  // "metrics-token" of the configuration; empty, GET /metrics is off.
  std::string metricsToken;
  unsigned ioThreads = 2;
  unsigned backgroundThreads = 2;
  // With port 0 the web layer binds any free port (see httpPort()); otherwise the fixture picks
  // free ports itself and writes them into the configuration, so that log lines name them.
  bool configurePorts = false;
  // When not 0, the HTTP port written into the configuration whatever configurePorts says.
  std::uint16_t httpPortOverride = 0;
  // Certificate and key are made in the temporary directory; without them init fails.
  bool makeCertificate = true;
  // Test-only routes, registered on the application before init.
  std::function<void(web::HttpAppFramework&)> registerRoutes;
  // The host's session inactivity time.
  std::chrono::milliseconds sessionTimeout = std::chrono::seconds(900);
  // The host's first state, seeded as tavel-sim seeds it: the demo models unless switched off,
  // then these fixture texts in order (the fixture format of docs/SIMULATOR.md).
  bool demoModels = true;
  std::vector<std::string> fixtures;
};

// The plug-in inside a simulated host in the test's own process: a temporary directory with a
// configuration file, a web configuration that lists the three plug-ins, a log configuration,
// a self-signed certificate and a log directory. The web application is a process-wide
// singleton, so a process can run one of these only once.
class KeloTestServer {
 public:
  explicit KeloTestServer(KeloTestServerOptions options = {});
  // Quits the web application, waits for the server thread, deletes the plug-in.
  ~KeloTestServer();

  KeloTestServer(const KeloTestServer&) = delete;
  KeloTestServer& operator=(const KeloTestServer&) = delete;

  // init, then waits until the server serves; throws std::runtime_error with the plug-in's
  // status when it does not within 20 s.
  void start();
  // init only, for tests of its failures.
  void initOnly();
  // Quits the web application, waits for the server thread and deletes the plug-in now.
  void deletePlugin();

  sim::SimTavel& host() { return *tavel; }
  Kelo& kelo() { return *plugin; }
  std::uint16_t httpPort() const;
  std::uint16_t httpsPort() const;
  // A logged-in session of a host user ("admin" administrator, "operator", "viewer" read-only).
  std::string openSession(const std::string& user = "admin");

  const std::filesystem::path& directory() const { return dir; }
  std::string configFile() const { return (dir / "config.json").string(); }
  std::string logConfigFile() const { return (dir / "log.conf").string(); }
  std::string webConfigFile() const { return (dir / "web-config.json").string(); }
  std::string certificateFile() const { return (dir / "server.crt").string(); }
  std::string privateKeyFile() const { return (dir / "server.key").string(); }
  std::string logFile() const;
  std::string readLog() const;

  // Polls `condition` every 5 ms until it holds or `limit` has passed.
  static bool waitFor(const std::function<bool()>& condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(10));
  // A port that was free a moment ago.
  static std::uint16_t freePort();
  // Writes a self-signed certificate and its key (PEM) with the openssl command.
  static void makeSelfSignedCertificate(const std::string& certificate, const std::string& key);

  static constexpr std::uint32_t kPluginId = 7;

 private:
  void writeFiles();

  KeloTestServerOptions options;
  std::filesystem::path dir;
  std::unique_ptr<sim::SimTavel> tavel;
  std::unique_ptr<Kelo> plugin;
  bool initialised = false;
};

}  // namespace halvor::kelo::test
