#include "EmbeddedHost.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "sim/HostSeed.h"

namespace halvor::kelo::bench {
namespace {

sim::SimTavelOptions quietHost() {
  sim::SimTavelOptions options;
  options.echoToConsole = false;
  options.sessionTimeout = std::chrono::hours(24);
  return options;
}

std::filesystem::path makeScratchFolder(const std::string& name) {
  std::string pattern = (std::filesystem::temp_directory_path() / (name + "-XXXXXX")).string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error(name + ": mkdtemp failed");
  return pattern;
}

void writeText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path) << text;
}

}  // namespace

EmbeddedHost::EmbeddedHost(Options options)
    : options_(std::move(options)), dir_(makeScratchFolder(options_.name)), host_(quietHost()) {
  writeFiles();
  host_.addUser({"kelo", "kelo-bench", "administrator", {}});
  sim::HostSeed::seed(host_, {}, true);
}

EmbeddedHost::~EmbeddedHost() {
  stop();
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void EmbeddedHost::writeFiles() const {
  std::filesystem::create_directories(dir_ / "logs");
  std::filesystem::create_directories(dir_ / "www");
  const std::string command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=localhost -keyout " +
      (dir_ / "server.key").string() + " -out " + (dir_ / "server.crt").string() +
      " >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0)
    throw std::runtime_error(options_.name + ": openssl failed");
  writeText(dir_ / "config.json",
            "{\"UserName\": \"kelo\", \"Password\": \"kelo-bench\", \"LogDirectory\": \"" +
                (dir_ / "logs").string() + "\", \"PX3LocalhostIp\": [\"127.0.0.1\"], " +
                "\"server-certificate\": \"" + (dir_ / "server.crt").string() + "\", " +
                "\"server-private-key\": \"" + (dir_ / "server.key").string() + "\", " +
                "\"https-port\": " + std::to_string(options_.httpsPort) +
                ", \"http-port\": " + std::to_string(options_.httpPort) +
                ", \"drogon-config\": \"" + (dir_ / "web-config.json").string() +
                "\", \"bypass-cors\": false, \"cors-origin\": \"\", \"metrics-token\": \"" +
                kMetricsToken + "\"}");
  writeText(dir_ / "web-config.json",
            "{\"app\": {\"number_of_threads\": " + std::to_string(options_.ioThreads) +
                ", \"document_root\": \"" + (dir_ / "www").string() +
                "\", \"idle_connection_timeout\": 0, \"max_connections_per_ip\": 0}, "
                "\"plugins\": ["
                "{\"name\": \"WebKeloInterface\", \"config\": {}},"
                "{\"name\": \"ResourceListenerManager\", \"config\": {}},"
                "{\"name\": \"BackgroundTaskQueue\", \"config\": {\"threads_num\": 1, "
                "\"name\": \"keloBackground\"}}]}");
  std::string logConfig =
      "* GLOBAL:\n    ENABLED = true\n    TO_FILE = true\n    TO_STANDARD_OUTPUT = false\n";
  if (!options_.debugLog) logConfig += "* DEBUG:\n    ENABLED = false\n";
  writeText(dir_ / "log.conf", logConfig);
}

bool EmbeddedHost::start() {
  plugin_ = std::make_unique<Kelo>(&host_);
  plugin_->init(1, (dir_ / "log.conf").string(), (dir_ / "config.json").string());
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!(application().isRunning() && application().getListeners().size() >= 2)) {
    if (std::chrono::steady_clock::now() > deadline || !plugin_->isRunning()) {
      std::cerr << options_.name
                << ": the plug-in does not serve: " << plugin_->currentStatus().getText() << "\n";
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

void EmbeddedHost::runHostPass() {
  const auto now = std::chrono::steady_clock::now();
  if (plugin_->produce(now)) plugin_->consume(now);
  host_.tickModels(now);
}

void EmbeddedHost::stop() {
  if (!plugin_) return;
  plugin_->shutdown();
  application().quit();
  plugin_->joinServerThread();
  plugin_.reset();
}

int StopSignals::block() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signalfd(-1, &signals, SFD_NONBLOCK);
}

bool StopSignals::arrived(int descriptor) {
  signalfd_siginfo info{};
  return read(descriptor, &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info));
}

}  // namespace halvor::kelo::bench
