#include "kelo/Kelo.h"

#include <google/protobuf/stubs/common.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <boost/exception/diagnostic_information.hpp>
#include <cerrno>
#include <cstring>
#include <regex>
#include <sstream>

#include "kelo/CorsAdvices.h"
#include "kelo/HostPaths.h"
#include "kelo/KeloLog.h"
#include "kelo/LogFileRoller.h"
#include "kelo/Registrations.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/handlers/certificates/ApplyCertificateListener.h"
#include "kelo/handlers/http/files/FileStorage.h"
#include "kelo/handlers/http/session/LoginThrottle.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/metrics/ServerHealthMetrics.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/BuildIdentifier.h"
#include "tavelabi/JsonConfigLoader.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/Session.h"

namespace halvor::kelo {

using tavelabi::CCRUD;
using tavelabi::PluginStatus;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

constexpr auto kStatusReportPeriod = std::chrono::nanoseconds(5'000'000'000);
constexpr auto kHeartbeatPeriod = std::chrono::nanoseconds(999'999'999);

// The route log names the four methods of REST routes; any other shows its number.
std::string methodName(web::HttpMethod method) {
  switch (method) {
    case web::Get:
    case web::Post:
    case web::Put:
    case web::Delete:
      return std::string(web::toString(method));
    default:
      return std::to_string(static_cast<int>(method));
  }
}

std::string removeFilePrefix(std::string path) {
  const std::string prefix = "file://";
  for (auto at = path.find(prefix); at != std::string::npos; at = path.find(prefix)) {
    path.erase(at, prefix.size());
  }
  return path;
}

}  // namespace

std::string GenerateVersionPath(std::string pluginName) {
  return std::regex_replace(std::string("/versions/<pluginName>"), std::regex("<pluginName>"),
                            pluginName);
}

Kelo::Kelo(tavelabi::ITavel* tavel)
    : tavelabi::BasePlugin(tavel), wasUsingColor(TermTint::isUsingColor()) {
  TermTint::useColor(true);
  GOOGLE_PROTOBUF_VERIFY_VERSION;
  setName("Kelo");
  setVersion(tavelabi::BuildIdentifier(2, 59, 2, "r0"));
  setId(0);
  lastStatusReport = std::chrono::steady_clock::now();
  lastHeartbeat = lastStatusReport;
}

Kelo::~Kelo() {
  shutdown();
  if (serverThread && serverThread->joinable()) {
    serverThread->detach();
  }
  TermTint::useColor(wasUsingColor);
}

std::string Kelo::getPrivateKeyPath() { return privateKeyFile; }

std::string Kelo::getCertificatePath() { return certificateFile; }

void Kelo::loadConfigFile(std::string path) {
  if (path.empty()) {
    return;
  }
  // A key that the file lacks reads as null and overwrites the member with null's conversion:
  // the defaults hold only when no file is named at all.
  const Json::Value config = tavelabi::JsonConfigLoader::loadJsonConfigFile(path);
  userName = config["UserName"].asString();
  password = config["Password"].asString();
  logDirectory = config["LogDirectory"].asString();
  for (const auto& ip : config["PX3LocalhostIp"]) {
    localhostIps.push_back(ip.asString());
  }
  certificateFile = config["server-certificate"].asString();
  privateKeyFile = config["server-private-key"].asString();
  httpsPort = config["https-port"].asInt();
  httpPort = config["http-port"].asInt();
  drogonConfigFile = config["drogon-config"].asString();
  bypassCors = config["bypass-cors"].asBool();
  corsOrigin = config["cors-origin"].asString();
  // Unlike the keys above, an absent key keeps its default: throttling stays on.
  LoginThrottle::shared().setLimit(
      config.get("login-failures-per-minute", LoginThrottle::kDefaultFailuresPerMinute).asUInt());
  metricsToken = config["metrics-token"].asString();
  // Absent keys keep the controller's own storage and the remounts of its sticks.
  FileStorage::configure(config.get("storage-root", "").asString(),
                         config.get("usb-remount", true).asBool());
}

void Kelo::configureLogger(uint32_t id, std::string logConfigFile) {
  setLoggerId(getName() + std::to_string(id));
  const std::string loggerId = getLoggerId();
  el::Configurations configuration(logConfigFile, true);
  configuration.parseFromText("*GLOBAL:\n FILENAME = " + logDirectory + "/" + loggerId + ".log");
  el::Logger* logger = el::Loggers::getLogger(loggerId, true);
  el::Loggers::reconfigureLogger(logger, configuration);
  LogFileRoller::install();
  KELO_LOG(INFO, loggerId) << "Using separate log file " << loggerId;
  KELO_LOG(INFO, loggerId) << "Logger initialized";
}

void Kelo::logKeloConfig() {
  KELO_LOG(INFO, getLoggerId()) << "Configuration: ";
  KELO_LOG(INFO, getLoggerId()) << "\tUserName: " << userName;
  KELO_LOG(INFO, getLoggerId()) << "\tLogDirectory: " << logDirectory;
  KELO_LOG(INFO, getLoggerId()) << "\tCertificate: " << certificateFile;
  KELO_LOG(INFO, getLoggerId()) << "\tPrivateKey: " << privateKeyFile;
  KELO_LOG(INFO, getLoggerId()) << "\tHttp port: " << httpPort;
  KELO_LOG(INFO, getLoggerId()) << "\tHttps port: " << httpsPort;
  KELO_LOG(INFO, getLoggerId()) << "\tLogin failures per minute: "
                                << LoginThrottle::shared().limit();
}

bool Kelo::isSSLCertificatePresent(std::string& error) {
  for (const std::string* path : {&privateKeyFile, &certificateFile}) {
    struct stat info {};
    if (stat(removeFilePrefix(*path).c_str(), &info) != 0) {
      // The caller reports the system's text for errno: keep stat's.
      const int statErrno = errno;
      error = "Missing file: " + *path;
      errno = statErrno;
      return false;
    }
  }
  return true;
}

void Kelo::init(const uint32_t& id, const std::string& logConfigFile,
                const std::string& configFile) {
  setId(id);
  try {
    loadConfigFile(configFile);
    configureLogger(id, logConfigFile);
  } catch (...) {
    // The logger may not exist yet: nothing is logged.
    setStatus(PluginStatus::ConfigurationFailure, "Configuration Failure");
    reportStatus();
    shutdown();
    return;
  }
  KELO_LOG(INFO, getLoggerId()) << TitleTheme::request_title("Initializing Kelo ...");
  setStatus(PluginStatus::Initializing, "Initializing");
  reportStatus();
  logKeloConfig();

  tavelabi::ITavel* tavel = getTavelInterface();
  tavelabi::Session session;
  try {
    session = tavelabi::Session::convertResourceToSession(tavel->createPluginSession(this));
    setSessionId(session.sessionId);
  } catch (...) {
    KELO_LOG(ERROR, getLoggerId()) << boost::current_exception_diagnostic_information();
    failInit(PluginStatus::AuthenticationFailure, "Session is not generated", "");
    return;
  }
  try {
    tavel->loginPlugin(this, userName, password, session);
  } catch (...) {
    KELO_LOG(ERROR, getLoggerId()) << boost::current_exception_diagnostic_information();
    failInit(PluginStatus::AuthenticationFailure,
             "Authentication Failed, username and password in config.json don't match with "
             "user database",
             "");
    return;
  }

  const std::string versionPath = GenerateVersionPath(getName());
  if (!createOnHost(versionPath, Resource(ResourceValue(getVersion())),
                    "Unable to register version " + versionPath) ||
      !createOnHost(HostPaths::kConnectivities, Resource(ResourceValue(ResourceValue::Map{})),
                    "Unable to create websocket connectivities resource") ||
      !createOnHost(HostPaths::kLocalhostIp, Resource(ResourceValue(localhostIps)),
                    "Unable to create PX3 localhost IP resource")) {
    return;
  }

  std::string error;
  if (!isSSLCertificatePresent(error)) {
    const std::string text = "Missing SSL certificates! " + error + " " + std::strerror(errno);
    failInit(PluginStatus::ConfigurationFailure, text, text, true);
    return;
  }
  subscribeCertificateListener();

  if (!webServerConfigured && !configureWebServer()) {
    return;
  }
  if (!serverThread) {
    startServerThread();
  }
  setRunning(true);
  setStatus(PluginStatus::Ok, "OK");
  if (!serverMayRun) {
    serverMayRun = true;
    initFinished.set_value();
  }
}

bool Kelo::createOnHost(const std::string& path, const Resource& resource,
                        const std::string& failure) {
  try {
    ResourceAction action(CCRUD::Create, path, resource, this, getSessionId());
    getTavelInterface()->processResourceAction(action);
    return true;
  } catch (...) {
    failInit(PluginStatus::RuntimeFailure, failure, failure);
    return false;
  }
}

void Kelo::failInit(PluginStatus::Code code, const std::string& text, const std::string& logLine,
                    bool logInRed) {
  setStatus(code, text);
  reportStatus();
  if (!logLine.empty()) {
    KELO_LOG(ERROR, getLoggerId()) << (logInRed ? TermTint::brightRed(logLine) : logLine);
  }
  shutdown();
}

// A second init finds the first one's listener still held by the host: it leaves the host
// before it is deleted. The new one is stored only once the host holds it, so that a shutdown on
// the server thread in between cannot delete what the host is about to hold.
void Kelo::subscribeCertificateListener() {
  releaseCertificateListener();
  auto listener = std::make_unique<ApplyCertificateListener>("/command/applyCertificate",
                                                             getTavelInterface(), this);
  getTavelInterface()->addResourceListener(this, listener.get());
  std::lock_guard lock(listenerMutex);
  applyCertificateListener = std::move(listener);
}

void Kelo::releaseCertificateListener() {
  std::unique_ptr<ApplyCertificateListener> listener;
  {
    std::lock_guard lock(listenerMutex);
    listener = std::move(applyCertificateListener);
  }
  if (listener) {
    getTavelInterface()->removeResourceListener(this, listener.get());
  }
}

// A web configuration that cannot be used (a missing file, a bad value) ends init as a server
// that cannot start does: the diagnostic text, and no server.
bool Kelo::configureWebServer() {
  try {
    configureDrogon();
    return true;
  } catch (...) {
    const std::string diagnostic = boost::current_exception_diagnostic_information();
    failInit(PluginStatus::RuntimeFailure, "Drogon : " + diagnostic, diagnostic);
    return false;
  }
}

void Kelo::configureDrogon() {
  if (bypassCors) {
    KELO_LOG(INFO, getLoggerId()) << TermTint::brightYellow("CORS Disabled!");
  }
  web::HttpAppFramework& application = web::app();
  Registrations::registerPluginTypes(application);
  Registrations::registerRoutes(application);
  application.loadConfigFile(drogonConfigFile);
  // A front end served from another origin needs the session cookie on its cross-site calls.
  if (bypassCors) application.config().cookieSameSite.clear();
  application.addListener("0.0.0.0", static_cast<uint16_t>(httpPort), false, "", "", false, {})
      .addListener("0.0.0.0", static_cast<uint16_t>(httpsPort), true, certificateFile,
                   privateKeyFile, false, {})
      .setLogLevel(4)
      .registerBeginningAdvice([this] { onServerBeginning(); })
      .registerHttpResponseCreationAdvice(
          CorsAdvices::responseCreationAdvice(bypassCors, corsOrigin))
      .registerPreRoutingAdvice(CorsAdvices::preRoutingAdvice)
      .setTrafficObserver(ServerHealthMetrics::instance());
  // The one foreign origin that may use the server may open its WebSockets too.
  if (!corsOrigin.empty()) application.config().trustedWebSocketOrigins.push_back(corsOrigin);
  webServerConfigured = true;
}

void Kelo::onServerBeginning() {
  web::HttpAppFramework& application = web::app();
  auto* keloInterface = application.getPlugin<WebKeloInterface>();
  auto* listenerManager = application.getPlugin<ResourceListenerManager>();
  if (keloInterface == nullptr || listenerManager == nullptr) {
    throw std::runtime_error("The web configuration file " + drogonConfigFile +
                             " must list the plug-ins WebKeloInterface, ResourceListenerManager "
                             "and BackgroundTaskQueue");
  }
  keloInterface->tavel = getTavelInterface();
  keloInterface->pluginInfo = this;
  keloInterface->metricsToken = metricsToken;
  keloInterface->pluginStatus = [this] { return currentStatus(); };
  listenerManager->setLoggerId(getLoggerId());
  for (const auto& [path, method, description] : application.getHandlersInfo()) {
    KELO_LOG(INFO, getLoggerId()) << "Register " << methodName(method) << " " << path << " "
                                  << description;
  }
  KELO_LOG(INFO, getLoggerId()) << TermTint::brightYellow(
      "Webserver listening for HTTP / HTTPS traffic on " + std::to_string(httpPort) + " / " +
      std::to_string(httpsPort));
}

void Kelo::startServerThread() {
  serverThread = std::make_unique<std::thread>([this] { runServer(); });
}

void Kelo::joinServerThread() {
  if (serverThread && serverThread->joinable()) {
    serverThread->join();
  }
}

void Kelo::runServer() {
  prctl(PR_SET_NAME, "keloServiceThread", 0, 0, 0);
  initFinished.get_future().wait();
  try {
    web::app().run();
  } catch (...) {
    const std::string diagnostic = boost::current_exception_diagnostic_information();
    KELO_LOG(ERROR, getLoggerId()) << diagnostic;
    setStatus(PluginStatus::RuntimeFailure, "Drogon : " + diagnostic);
    reportStatus();
    shutdown();
  }
  setRunning(false);
}

bool Kelo::checkTimedTasks(const tavelabi::TimePoint& now) {
  if (now - lastStatusReport >= kStatusReportPeriod) {
    statusReportDue = true;
    lastStatusReport = now;
  }
  if (now - lastHeartbeat > kHeartbeatPeriod) {
    heartbeatDue = true;
    lastHeartbeat = now;
  }
  return statusReportDue || heartbeatDue;
}

bool Kelo::produce(const tavelabi::TimePoint& now) { return checkTimedTasks(now); }

void Kelo::consume(const tavelabi::TimePoint& now) {
  // Each flag is cleared after its task, so that a task that throws is tried again next time.
  if (statusReportDue) {
    reportStatus();
    statusReportDue = false;
  }
  if (heartbeatDue) {
    checkHeartbeat();
    heartbeatDue = false;
  }
  if (restartDue) {
    restartTavel();
    restartDue = false;
  }
}

void Kelo::checkHeartbeat() {
  ResourceAction read(CCRUD::Read, HostPaths::kConnectivities, this, getSessionId());
  Resource answer = getTavelInterface()->processResourceAction(read);
  ResourceValue::Map connectivities = answer.values.at("value").getMapValue();

  std::vector<std::string> lapsed;
  for (auto& [ip, count] : connectivities) {
    const int32_t newCount = count.getIntValue() - 1;
    if (newCount < 1) {
      lapsed.push_back(ip);
    }
    count.setIntValue(newCount);
  }
  for (const auto& ip : lapsed) {
    connectivities.erase(ip);
  }

  ResourceAction update(CCRUD::Update, HostPaths::kConnectivities,
                        Resource(ResourceValue(connectivities)), this, getSessionId());
  getTavelInterface()->processResourceAction(update);
}

void Kelo::restartTavel() {
  ResourceAction command(CCRUD::Command, "/command/restartTavel", this, getSessionId());
  getTavelInterface()->processResourceAction(command);
}

void Kelo::shutdown() {
  KELO_LOG(INFO, getLoggerId()) << "Shutting Kelo down.";
  // Released rather than left dangling, so that the destructor's second shutdown is harmless.
  releaseCertificateListener();
  // The status of a failure that led here stays what later reports show.
  getTavelInterface()->setPluginStatus(this,
                                       PluginStatus(PluginStatus::Stopped, "Kelo Shutting down."));
  setRunning(false);
}

void Kelo::setStatus(PluginStatus::Code code, const std::string& text) {
  std::lock_guard lock(statusMutex);
  statusCode = code;
  statusText = text;
}

tavelabi::PluginStatus Kelo::currentStatus() const {
  std::lock_guard lock(statusMutex);
  return PluginStatus(statusCode, statusText);
}

void Kelo::reportStatus() { getTavelInterface()->setPluginStatus(this, currentStatus()); }

void Kelo::setRunning(bool value) {
  boost::unique_lock<boost::upgrade_mutex> lock(stateMutex);
  running = value;
}

bool Kelo::isRunning() const {
  boost::shared_lock<boost::upgrade_mutex> lock(stateMutex);
  return running;
}

}  // namespace halvor::kelo
