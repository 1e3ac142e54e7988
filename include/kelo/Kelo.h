#pragma once

#include <atomic>
#include <boost/thread/shared_mutex.hpp>
#include <cstdint>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tavelabi/BasePlugin.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/PluginStatus.h"
#include "tavelabi/TermTint.h"

namespace halvor::kelo {

class ApplyCertificateListener;

// The plug-in's one object: configuration, logging, the web server's set-up and thread, the
// timed tasks driven by the host's loop, and shutdown.
class Kelo : public tavelabi::BasePlugin {
 public:
  explicit Kelo(tavelabi::ITavel* tavel);
  ~Kelo() override;

  void init(const uint32_t& id, const std::string& logConfigFile,
            const std::string& configFile) override;
  bool produce(const tavelabi::TimePoint& now) override;
  void consume(const tavelabi::TimePoint& now) override;
  void shutdown() override;

  virtual std::string getPrivateKeyPath();
  virtual std::string getCertificatePath();

  void loadConfigFile(std::string path);
  void configureLogger(uint32_t id, std::string logConfigFile);
  void logKeloConfig();
  bool isSSLCertificatePresent(std::string& error);
  bool checkTimedTasks(const tavelabi::TimePoint& now);
  void checkHeartbeat();
  void restartTavel();
  void configureDrogon();

  // Set by the certificate listener on another thread, cleared by consume.
  void setRestartDue() { restartDue = true; }
  bool isRestartDue() const { return restartDue; }

  // Waits until the server thread has ended. The plug-in never stops the web server itself;
  // a program that does (tests, benchmarks) calls this after quitting the application and
  // before deleting the plug-in, since the destructor only detaches the thread.
  void joinServerThread();

  // Read-only views for tests and the host's console.
  bool isRunning() const;
  tavelabi::PluginStatus currentStatus() const;
  bool isWebServerConfigured() const { return webServerConfigured; }
  int32_t getHttpPort() const { return httpPort; }
  int32_t getHttpsPort() const { return httpsPort; }
  const std::string& getDrogonConfigFile() const { return drogonConfigFile; }
  const std::vector<std::string>& getLocalhostIps() const { return localhostIps; }
  bool getBypassCors() const { return bypassCors; }
  const std::string& getCorsOrigin() const { return corsOrigin; }
  const std::string& getUserName() const { return userName; }
  const std::string& getLogDirectory() const { return logDirectory; }
  const std::string& getMetricsToken() const { return metricsToken; }

 private:
  // One failed step of init: record and report the status, log, shut down.
  void failInit(tavelabi::PluginStatus::Code code, const std::string& text,
                const std::string& logLine, bool logInRed = false);
  void setStatus(tavelabi::PluginStatus::Code code, const std::string& text);
  void reportStatus();
  void setRunning(bool value);
  // A Create under the plug-in's session; when the host refuses it, init fails with `failure`
  // as status text and log line, and the result is false.
  bool createOnHost(const std::string& path, const tavelabi::Resource& resource,
                    const std::string& failure);
  void subscribeCertificateListener();
  // Takes the certificate listener from the host and deletes it, if there is one.
  void releaseCertificateListener();
  // configureDrogon, its failure reported as init's: false when init must end.
  bool configureWebServer();
  void startServerThread();
  void runServer();
  // The beginning advice: runs once on the server thread before requests are served.
  void onServerBeginning();

  mutable boost::upgrade_mutex stateMutex;
  // Opens when init has taken its last step, so that a server thread that dies at once cannot
  // have its failure overwritten by init's "OK".
  std::promise<void> initFinished;
  bool serverMayRun = false;
  bool wasUsingColor;
  TermTint tint;
  std::unique_ptr<std::thread> serverThread;
  tavelabi::TimePoint lastStatusReport;
  tavelabi::TimePoint lastHeartbeat;
  bool running = false;
  bool webServerConfigured = false;
  bool statusReportDue = true;
  bool heartbeatDue = true;
  std::atomic<bool> restartDue{false};
  std::string userName;
  std::string password;
  std::string logDirectory;
  std::vector<std::string> localhostIps;
  int32_t httpPort = 7000;
  int32_t httpsPort = 8000;
  std::string drogonConfigFile = "./drogon-config.json";
  std::string privateKeyFile = "certificates/server.key";
  std::string certificateFile = "certificates/server.crt";
  // The server thread writes the status when it dies while the host's thread reports it.
  mutable std::mutex statusMutex;
  tavelabi::PluginStatus::Code statusCode = tavelabi::PluginStatus::Ok;
  std::string statusText = "OK";
  bool bypassCors = false;
  std::string corsOrigin;
  // "metrics-token": the bearer token of GET /metrics; empty, the metrics are off.
  std::string metricsToken;
  // shutdown runs on the host's thread and, when the server dies, on the server thread.
  std::mutex listenerMutex;
  std::unique_ptr<ApplyCertificateListener> applyCertificateListener;
};

// "/versions/<pluginName>" with the placeholder replaced through the regex library's format
// rules.
std::string GenerateVersionPath(std::string pluginName);

}  // namespace halvor::kelo
