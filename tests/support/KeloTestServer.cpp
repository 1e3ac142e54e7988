#include "support/KeloTestServer.h"

#include <json/json.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "sim/FixtureLoader.h"
#include "sim/HostSeed.h"
#include "tavelabi/PluginStatus.h"

namespace halvor::kelo::test {

namespace {

void writeText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream out(path);
  out << text;
  if (!out) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

std::string jsonText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  return Json::writeString(builder, value);
}

std::filesystem::path makeTemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kelo-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("mkdtemp failed");
  }
  return pattern;
}

}  // namespace

KeloTestServer::KeloTestServer(KeloTestServerOptions opts)
    : options(std::move(opts)), dir(makeTemporaryDirectory()) {
  sim::SimTavelOptions hostOptions;
  hostOptions.echoToConsole = false;
  hostOptions.sessionTimeout = options.sessionTimeout;
  tavel = std::make_unique<sim::SimTavel>(hostOptions);
  std::vector<sim::Fixture> fixtures;
  for (std::size_t i = 0; i < options.fixtures.size(); ++i) {
    fixtures.push_back(
        sim::FixtureLoader::parse(options.fixtures[i], "test fixture " + std::to_string(i + 1)));
  }
  sim::HostSeed::seed(*tavel, fixtures, options.demoModels);
  tavel->addUser({options.userName, options.password, options.userRole, {}});
  if (options.userName != "admin") {
    tavel->addUser({"admin", "admin-test", "administrator", {}});
  }
  tavel->addUser({"operator", "operator-test", "operator", {}});
  tavel->addUser({"viewer", "viewer-test", "read-only", {}});
  writeFiles();
  plugin = std::make_unique<Kelo>(tavel.get());
  if (options.registerRoutes) {
    options.registerRoutes(web::app());
  }
}

KeloTestServer::~KeloTestServer() {
  deletePlugin();
  tavel.reset();
  std::error_code ignored;
  std::filesystem::remove_all(dir, ignored);
}

void KeloTestServer::writeFiles() {
  std::uint16_t http = 0;
  std::uint16_t https = 0;
  if (options.configurePorts) {
    http = freePort();
    do {
      https = freePort();
    } while (https == http);
  }
  Json::Value config;
  config["UserName"] = options.userName;
  config["Password"] =
      options.configuredPassword.empty() ? options.password : options.configuredPassword;
  config["LogDirectory"] = (dir / "logs").string();
  config["PX3LocalhostIp"] = Json::arrayValue;
  for (const auto& ip : options.localhostIps) {
    config["PX3LocalhostIp"].append(ip);
  }
  config["server-certificate"] = certificateFile();
  config["server-private-key"] = privateKeyFile();
  config["https-port"] = https;
  config["http-port"] = options.httpPortOverride != 0 ? options.httpPortOverride : http;
  config["drogon-config"] = webConfigFile();
  config["bypass-cors"] = options.bypassCors;
  config["cors-origin"] = options.corsOrigin;
  config["metrics-token"] = options.metricsToken;
  writeText(configFile(), jsonText(config));

  Json::Value web;
  web["app"]["number_of_threads"] = options.ioThreads;
  web["app"]["document_root"] = (dir / "www").string();
  web["app"]["upload_path"] = (dir / "uploads").string();
  Json::Value plugins(Json::arrayValue);
  for (const char* name : {"WebKeloInterface", "ResourceListenerManager"}) {
    Json::Value entry;
    entry["name"] = name;
    entry["config"] = Json::objectValue;
    plugins.append(entry);
  }
  Json::Value queue;
  queue["name"] = "BackgroundTaskQueue";
  queue["config"]["threads_num"] = options.backgroundThreads;
  queue["config"]["name"] = "keloTestQueue";
  plugins.append(queue);
  web["plugins"] = plugins;
  writeText(webConfigFile(), jsonText(web));

  writeText(logConfigFile(),
            "* GLOBAL:\n"
            "    FORMAT = \"%datetime %level [%logger] %msg\"\n"
            "    ENABLED = true\n"
            "    TO_FILE = true\n"
            "    TO_STANDARD_OUTPUT = false\n");
  std::filesystem::create_directories(dir / "logs");
  std::filesystem::create_directories(dir / "www");
  if (options.makeCertificate) {
    makeSelfSignedCertificate(certificateFile(), privateKeyFile());
  }
}

void KeloTestServer::makeSelfSignedCertificate(const std::string& certificate,
                                               const std::string& key) {
  const std::string command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=localhost -keyout '" +
      key + "' -out '" + certificate + "' >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0) {
    throw std::runtime_error("openssl could not make a certificate");
  }
}

void KeloTestServer::deletePlugin() {
  web::app().quit();
  if (plugin) {
    plugin->joinServerThread();
  }
  plugin.reset();
}

void KeloTestServer::initOnly() {
  initialised = true;
  plugin->init(kPluginId, logConfigFile(), configFile());
}

void KeloTestServer::start() {
  initOnly();
  const bool serving =
      waitFor([] { return web::app().isRunning() && web::app().getListeners().size() >= 2; },
              std::chrono::seconds(20));
  if (!serving || !plugin->isRunning()) {
    const tavelabi::PluginStatus status = plugin->currentStatus();
    throw std::runtime_error("the plug-in does not serve: " + status.getText());
  }
}

std::uint16_t KeloTestServer::httpPort() const { return web::app().getListeners().at(0).toPort(); }

std::uint16_t KeloTestServer::httpsPort() const { return web::app().getListeners().at(1).toPort(); }

std::string KeloTestServer::openSession(const std::string& user) {
  return tavel->openSession(user);
}

std::string KeloTestServer::logFile() const {
  return (dir / "logs" / ("Kelo" + std::to_string(kPluginId) + ".log")).string();
}

std::string KeloTestServer::readLog() const {
  std::ifstream in(logFile());
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

bool KeloTestServer::waitFor(const std::function<bool()>& condition,
                             std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

std::uint16_t KeloTestServer::freePort() {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  socklen_t length = sizeof(address);
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    if (fd >= 0) {
      close(fd);
    }
    throw std::runtime_error("no free port");
  }
  close(fd);
  return ntohs(address.sin_port);
}

}  // namespace halvor::kelo::test
