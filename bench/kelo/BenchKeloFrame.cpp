// The plug-in inside the simulated host, in one process, with one extra simple-form route for
// load tests: GET "/1/bench/frame" reads "/bench/value" through a KeloResourceAction (two host
// reads: the locality list and the resource) and answers {"local":true,"value":"..."}.
// "/plaintext" is the web layer alone, in the same process, for comparison.
//
// Usage: bench-kelo-frame [--threads N] [--http-port P] [--https-port P]
// Prints one line "ready <http port> <https port>" when serving; SIGINT or SIGTERM stops it.
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

#include "kelo/Kelo.h"
#include "kelo/controllers/KeloHttpController.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

// KeloResourceAction's member function isLocalHost hides the field of its base.
bool markedLocal(const tavelabi::ResourceAction& action) { return action.isLocalHost; }

class GetBenchFrame : public web::KeloHttpController<GetBenchFrame> {
 public:
  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override {
    KeloResourceAction action(tavelabi::CCRUD::Read, "/bench/value", info, sessionId, req);
    const tavelabi::Resource answer = tavel->processResourceAction(action);
    std::string body =
        markedLocal(action) ? "{\"local\":true,\"value\":\"" : "{\"local\":false,\"value\":\"";
    body += answer.values.at("value").getStringValue();
    body += "\"}";
    resp->setContentTypeCode(web::CT_APPLICATION_JSON);
    resp->setBody(std::move(body));
    resp->setStatusCode(200);
  }
};

void writeText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path) << text;
}

int run(int argc, char** argv) {
  int threads = 1;
  int httpPort = 0;
  int httpsPort = 0;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--threads") {
      threads = std::atoi(argv[i + 1]);
    } else if (option == "--http-port") {
      httpPort = std::atoi(argv[i + 1]);
    } else if (option == "--https-port") {
      httpsPort = std::atoi(argv[i + 1]);
    } else {
      std::cerr << "usage: bench-kelo-frame [--threads N] [--http-port P] [--https-port P]\n";
      return 2;
    }
  }

  // Signals are read from a descriptor by the host's loop, never in a handler.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  const int signalFd = signalfd(-1, &signals, SFD_NONBLOCK);

  std::string pattern =
      (std::filesystem::temp_directory_path() / "bench-kelo-frame-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    return 1;
  }
  const std::filesystem::path dir = pattern;
  std::filesystem::create_directories(dir / "logs");
  std::filesystem::create_directories(dir / "www");
  const std::string command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=localhost -keyout " +
      (dir / "server.key").string() + " -out " + (dir / "server.crt").string() + " >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0) {
    std::cerr << "bench-kelo-frame: openssl failed\n";
    return 1;
  }
  writeText(dir / "config.json",
            "{\"UserName\": \"kelo\", \"Password\": \"kelo-bench\", \"LogDirectory\": \"" +
                (dir / "logs").string() + "\", \"PX3LocalhostIp\": [\"127.0.0.1\"], " +
                "\"server-certificate\": \"" + (dir / "server.crt").string() + "\", " +
                "\"server-private-key\": \"" + (dir / "server.key").string() + "\", " +
                "\"https-port\": " + std::to_string(httpsPort) +
                ", \"http-port\": " + std::to_string(httpPort) + ", \"drogon-config\": \"" +
                (dir / "web-config.json").string() +
                "\", \"bypass-cors\": false, \"cors-origin\": \"\"}");
  writeText(dir / "web-config.json",
            "{\"app\": {\"number_of_threads\": " + std::to_string(threads) +
                ", \"document_root\": \"" + (dir / "www").string() +
                "\", \"idle_connection_timeout\": 0}, \"plugins\": ["
                "{\"name\": \"WebKeloInterface\", \"config\": {}},"
                "{\"name\": \"ResourceListenerManager\", \"config\": {}},"
                "{\"name\": \"BackgroundTaskQueue\", \"config\": {\"threads_num\": 1, "
                "\"name\": \"keloBackground\"}}]}");
  writeText(dir / "log.conf",
            "* GLOBAL:\n    ENABLED = true\n    TO_FILE = true\n    TO_STANDARD_OUTPUT = false\n");

  sim::SimTavelOptions hostOptions;
  hostOptions.echoToConsole = false;
  hostOptions.sessionTimeout = std::chrono::hours(24);
  sim::SimTavel host(hostOptions);
  host.addUser({"kelo", "kelo-bench", "administrator", {}});
  host.addUser({"bench", "bench", "administrator", {}});
  tavelabi::ResourceAction seed(tavelabi::CCRUD::Create, "/bench/value",
                                tavelabi::Resource(tavelabi::ResourceValue("hello")), nullptr, "");
  host.processInternalAction(seed);
  host.openSession("bench", "bench-session");

  web::HttpAppFramework& application = web::app();
  GetBenchFrame::registerRoute(application, "/bench/frame", {web::Get}, "Benchmark frame route");
  application.registerHandler(
      "/plaintext",
      [](const web::HttpRequestPtr&, web::ResponseCallback&& callback) {
        auto response = web::HttpResponse::newHttpResponse();
        response->setContentTypeCode(web::CT_TEXT_PLAIN);
        response->setBody("Hello, World!");
        callback(response);
      },
      {web::Get}, "Plain text");

  auto plugin = std::make_unique<Kelo>(&host);
  plugin->init(1, (dir / "log.conf").string(), (dir / "config.json").string());
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!(application.isRunning() && application.getListeners().size() >= 2)) {
    if (std::chrono::steady_clock::now() > deadline || !plugin->isRunning()) {
      std::cerr << "bench-kelo-frame: the plug-in does not serve: "
                << plugin->currentStatus().getText() << "\n";
      return 1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  std::cout << "ready " << application.getListeners()[0].toPort() << " "
            << application.getListeners()[1].toPort() << std::endl;

  // The host's loop: about 100 passes a second until a signal arrives.
  signalfd_siginfo info{};
  while (read(signalFd, &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info))) {
    const auto now = std::chrono::steady_clock::now();
    if (plugin->produce(now)) {
      plugin->consume(now);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  plugin->shutdown();
  application.quit();
  plugin->joinServerThread();
  plugin.reset();
  std::filesystem::remove_all(dir);
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
