#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "kelo/Kelo.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "support/KeloTestServer.h"
#include "tavelabi/BuildIdentifier.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/TermTint.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::PluginStatus;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using test::KeloTestServer;
using test::KeloTestServerOptions;
using namespace std::chrono_literals;

const char* const kLongAuthenticationText =
    "Authentication Failed, username and password in config.json don't match with user database";

std::string readFile(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream out(path);
  out << text;
}

sim::SimTavelOptions quietHost() {
  sim::SimTavelOptions options;
  options.echoToConsole = false;
  return options;
}

// A plug-in with a logged-in session and the connectivity table, without init.
struct TimedTasksTest : ::testing::Test {
  TimedTasksTest() : host(quietHost()), kelo(&host) {
    host.addUser({"kelo", "pw", "administrator", {}});
    kelo.setSessionId(host.openSession("kelo"));
    setConnectivities({});
  }

  void setConnectivities(const ResourceValue::Map& table) {
    ResourceAction create(CCRUD::Create, "/kelo/websocketConnectivities",
                          Resource(ResourceValue(table)), nullptr, "");
    host.processInternalAction(create);
  }

  ResourceValue::Map connectivities() {
    return host.peek("/kelo/websocketConnectivities")->values.at("value").getMapValue();
  }

  std::vector<sim::StatusRecord> statuses() { return host.statusHistory(); }

  sim::SimTavel host;
  Kelo kelo;
};

TEST(KeloConstructionTest, StartsWithNameVersionIdAndOkStatus) {
  sim::SimTavel host(quietHost());
  Kelo kelo(&host);
  EXPECT_EQ(kelo.getName(), "Kelo");
  EXPECT_EQ(kelo.getVersion(), std::string(tavelabi::BuildIdentifier(2, 59, 2, "r0")));
  EXPECT_EQ(kelo.getId(), 0u);
  EXPECT_FALSE(kelo.isRunning());
  EXPECT_FALSE(kelo.isWebServerConfigured());
  EXPECT_EQ(kelo.currentStatus().getCode(), PluginStatus::Ok);
  EXPECT_EQ(kelo.currentStatus().getText(), "OK");
  EXPECT_TRUE(TermTint::isUsingColor());
}

TEST(KeloConstructionTest, DestructorRestoresTheColourSetting) {
  sim::SimTavel host(quietHost());
  TermTint::useColor(false);
  {
    Kelo kelo(&host);
    EXPECT_TRUE(TermTint::isUsingColor());
  }
  EXPECT_FALSE(TermTint::isUsingColor());
}

TEST(KeloConfigurationTest, EmptyPathKeepsTheDefaults) {
  sim::SimTavel host(quietHost());
  Kelo kelo(&host);
  kelo.loadConfigFile("");
  EXPECT_EQ(kelo.getHttpPort(), 7000);
  EXPECT_EQ(kelo.getHttpsPort(), 8000);
  EXPECT_EQ(kelo.getCertificatePath(), "certificates/server.crt");
  EXPECT_EQ(kelo.getPrivateKeyPath(), "certificates/server.key");
  EXPECT_EQ(kelo.getDrogonConfigFile(), "./drogon-config.json");
  EXPECT_FALSE(kelo.getBypassCors());
  EXPECT_EQ(kelo.getUserName(), "");
}

TEST(KeloConfigurationTest, EveryKeyIsRead) {
  sim::SimTavel host(quietHost());
  Kelo kelo(&host);
  const std::string path = testing::TempDir() + "kelo-every-key.json";
  writeFile(path, R"({"UserName": "u", "Password": "p", "LogDirectory": "/tmp/l",
    "PX3LocalhostIp": ["10.0.0.1", "10.0.0.2"], "server-certificate": "file://c.crt",
    "server-private-key": "k.key", "https-port": 8443, "http-port": 8080,
    "drogon-config": "w.json", "bypass-cors": true, "cors-origin": "http://x",
    "metrics-token": "tok"})");
  kelo.loadConfigFile(path);
  EXPECT_EQ(kelo.getUserName(), "u");
  EXPECT_EQ(kelo.getLogDirectory(), "/tmp/l");
  EXPECT_EQ(kelo.getLocalhostIps(), (std::vector<std::string>{"10.0.0.1", "10.0.0.2"}));
  EXPECT_EQ(kelo.getCertificatePath(), "file://c.crt");
  EXPECT_EQ(kelo.getPrivateKeyPath(), "k.key");
  EXPECT_EQ(kelo.getHttpsPort(), 8443);
  EXPECT_EQ(kelo.getHttpPort(), 8080);
  EXPECT_EQ(kelo.getDrogonConfigFile(), "w.json");
  EXPECT_TRUE(kelo.getBypassCors());
  EXPECT_EQ(kelo.getCorsOrigin(), "http://x");
  EXPECT_EQ(kelo.getMetricsToken(), "tok");
}

TEST(KeloConfigurationTest, MissingKeysOverwriteTheDefaultsWithNull) {
  sim::SimTavel host(quietHost());
  Kelo kelo(&host);
  const std::string path = testing::TempDir() + "kelo-no-http-port.json";
  writeFile(path, R"({"UserName": "u", "https-port": 8443})");
  kelo.loadConfigFile(path);
  EXPECT_EQ(kelo.getHttpPort(), 0);
  EXPECT_EQ(kelo.getHttpsPort(), 8443);
  EXPECT_EQ(kelo.getCertificatePath(), "");
  EXPECT_EQ(kelo.getPrivateKeyPath(), "");
  EXPECT_EQ(kelo.getDrogonConfigFile(), "");
  // No token: the metrics are off.
  EXPECT_EQ(kelo.getMetricsToken(), "");
}

TEST(KeloConfigurationTest, AValueOfARefusedTypeThrows) {
  sim::SimTavel host(quietHost());
  Kelo kelo(&host);
  const std::string path = testing::TempDir() + "kelo-bad-type.json";
  writeFile(path, R"({"http-port": "seven thousand"})");
  EXPECT_ANY_THROW(kelo.loadConfigFile(path));
}

TEST(KeloVersionPathTest, ReplacesThePlaceholderThroughFormatRules) {
  EXPECT_EQ(GenerateVersionPath("Kelo"), "/versions/Kelo");
  // "$&" is the whole match in the regular expression library's format rules.
  EXPECT_EQ(GenerateVersionPath("a$&b"), "/versions/a<pluginName>b");
}

TEST(KeloLoggerTest, EachInstanceLogsToAFileOfItsOwn) {
  KeloTestServer server;
  Kelo& kelo = server.kelo();
  kelo.loadConfigFile(server.configFile());
  kelo.configureLogger(3, server.logConfigFile());
  EXPECT_EQ(kelo.getLoggerId(), "Kelo3");
  const std::string log = readFile(kelo.getLogDirectory() + "/Kelo3.log");
  EXPECT_NE(log.find("Using separate log file Kelo3"), std::string::npos) << log;
  EXPECT_NE(log.find("Logger initialized"), std::string::npos) << log;
}

TEST(KeloLoggerTest, TheConfigurationIsLoggedWithoutThePassword) {
  KeloTestServerOptions options;
  options.password = "very-secret-word";
  KeloTestServer server(options);
  Kelo& kelo = server.kelo();
  kelo.loadConfigFile(server.configFile());
  kelo.configureLogger(4, server.logConfigFile());
  kelo.logKeloConfig();
  const std::string log = readFile(kelo.getLogDirectory() + "/Kelo4.log");
  EXPECT_NE(log.find("Configuration: "), std::string::npos);
  EXPECT_NE(log.find("\tUserName: kelo"), std::string::npos);
  EXPECT_NE(log.find("\tLogDirectory: " + kelo.getLogDirectory()), std::string::npos);
  EXPECT_NE(log.find("\tCertificate: " + server.certificateFile()), std::string::npos);
  EXPECT_NE(log.find("\tPrivateKey: " + server.privateKeyFile()), std::string::npos);
  EXPECT_NE(log.find("\tHttp port: 0"), std::string::npos);
  EXPECT_NE(log.find("\tHttps port: 0"), std::string::npos);
  EXPECT_EQ(log.find("very-secret-word"), std::string::npos) << log;
  EXPECT_EQ(log.find("Password"), std::string::npos) << log;
}

TEST(KeloCertificateTest, AMissingKeyIsReportedBeforeAMissingCertificate) {
  KeloTestServerOptions options;
  options.makeCertificate = false;
  KeloTestServer server(options);
  server.kelo().loadConfigFile(server.configFile());
  std::string error;
  EXPECT_FALSE(server.kelo().isSSLCertificatePresent(error));
  EXPECT_EQ(error, "Missing file: " + server.privateKeyFile());
}

TEST(KeloCertificateTest, AMissingCertificateIsReportedWithItsPrefix) {
  KeloTestServerOptions options;
  options.makeCertificate = false;
  KeloTestServer server(options);
  writeFile(server.privateKeyFile(), "key");
  const std::string path = server.directory().string() + "/prefixed.json";
  writeFile(path, "{\"server-private-key\": \"file://" + server.privateKeyFile() +
                      "\", \"server-certificate\": \"file://" + server.certificateFile() + "\"}");
  server.kelo().loadConfigFile(path);
  std::string error;
  EXPECT_FALSE(server.kelo().isSSLCertificatePresent(error));
  EXPECT_EQ(error, "Missing file: file://" + server.certificateFile());
}

TEST(KeloCertificateTest, PresentFilesLeaveTheErrorEmpty) {
  KeloTestServer server;
  const std::string path = server.directory().string() + "/prefixed.json";
  writeFile(path, "{\"server-private-key\": \"file://" + server.privateKeyFile() +
                      "\", \"server-certificate\": \"" + server.certificateFile() + "\"}");
  server.kelo().loadConfigFile(path);
  std::string error;
  EXPECT_TRUE(server.kelo().isSSLCertificatePresent(error));
  EXPECT_EQ(error, "");
}

TEST_F(TimedTasksTest, FirstConsumeReportsTheStatusAndAgesTheTable) {
  setConnectivities({{"10.0.0.1", ResourceValue(3)}});
  const auto now = std::chrono::steady_clock::now();
  kelo.consume(now);
  ASSERT_EQ(statuses().size(), 1u);
  EXPECT_EQ(statuses()[0].code, PluginStatus::Ok);
  EXPECT_EQ(statuses()[0].text, "OK");
  EXPECT_EQ(connectivities().at("10.0.0.1").getIntValue(), 2);
}

TEST_F(TimedTasksTest, FirstConsumeWorksWhateverProduceSaid) {
  setConnectivities({{"10.0.0.1", ResourceValue(3)}});
  const auto now = std::chrono::steady_clock::now();
  EXPECT_TRUE(kelo.produce(now - 10s));
  kelo.consume(now);
  EXPECT_EQ(statuses().size(), 1u);
  EXPECT_EQ(connectivities().at("10.0.0.1").getIntValue(), 2);
  // Both flags are cleared now.
  EXPECT_FALSE(kelo.produce(now - 10s));
  kelo.consume(now);
  EXPECT_EQ(statuses().size(), 1u);
  EXPECT_EQ(connectivities().at("10.0.0.1").getIntValue(), 2);
}

TEST_F(TimedTasksTest, ProduceTwiceWithinASecondSetsNothingTheSecondTime) {
  const auto start = std::chrono::steady_clock::now();
  kelo.consume(start);
  EXPECT_TRUE(kelo.produce(start + 1500ms));
  kelo.consume(start + 1500ms);
  EXPECT_FALSE(kelo.produce(start + 1600ms));
  EXPECT_FALSE(kelo.produce(start + 2400ms));
  EXPECT_TRUE(kelo.produce(start + 2501ms));
}

TEST_F(TimedTasksTest, HeartbeatIsDueAfterMoreThan999999999Nanoseconds) {
  const auto start = std::chrono::steady_clock::now();
  kelo.consume(start);
  ASSERT_TRUE(kelo.produce(start + 2s));  // both time points are now start + 2 s
  kelo.consume(start + 2s);
  EXPECT_FALSE(kelo.produce(start + 2s + 999'999'999ns));
  EXPECT_TRUE(kelo.produce(start + 3s));
}

TEST_F(TimedTasksTest, StatusIsReportedEveryFiveSeconds) {
  const auto start = std::chrono::steady_clock::now();
  kelo.consume(start);
  ASSERT_EQ(statuses().size(), 1u);
  ASSERT_TRUE(kelo.produce(start + 10s));  // both time points are now start + 10 s
  kelo.consume(start + 10s);
  ASSERT_EQ(statuses().size(), 2u);
  EXPECT_TRUE(kelo.produce(start + 14s));  // heartbeat only
  kelo.consume(start + 14s);
  EXPECT_EQ(statuses().size(), 2u);
  EXPECT_TRUE(kelo.produce(start + 15s));  // exactly five seconds: due
  kelo.consume(start + 15s);
  EXPECT_EQ(statuses().size(), 3u);
}

TEST_F(TimedTasksTest, EntriesLapseAfterTheirCount) {
  setConnectivities({{"a", ResourceValue(1)}, {"b", ResourceValue(2)}, {"c", ResourceValue(0)}});
  kelo.checkHeartbeat();
  ResourceValue::Map table = connectivities();
  EXPECT_EQ(table.count("a"), 0u);
  EXPECT_EQ(table.count("c"), 0u);
  ASSERT_EQ(table.count("b"), 1u);
  EXPECT_EQ(table.at("b").getIntValue(), 1);
  kelo.checkHeartbeat();
  EXPECT_TRUE(connectivities().empty());
  // An empty table is read and written all the same.
  kelo.checkHeartbeat();
  EXPECT_TRUE(connectivities().empty());
}

TEST_F(TimedTasksTest, AnAnswerWithoutValueThrowsAndTheFlagStays) {
  ResourceAction create(CCRUD::Create, "/kelo/websocketConnectivities", Resource(), nullptr, "");
  host.processInternalAction(create);
  EXPECT_THROW(kelo.checkHeartbeat(), std::out_of_range);
  const auto now = std::chrono::steady_clock::now();
  EXPECT_THROW(kelo.consume(now), std::out_of_range);
  EXPECT_EQ(statuses().size(), 1u);  // the status task ran before and is cleared
  setConnectivities({{"a", ResourceValue(4)}});
  kelo.consume(now);  // the heartbeat is tried again
  EXPECT_EQ(connectivities().at("a").getIntValue(), 3);
  EXPECT_EQ(statuses().size(), 1u);
  kelo.consume(now);
  EXPECT_EQ(connectivities().at("a").getIntValue(), 3);
}

TEST_F(TimedTasksTest, RestartDueAsksTheHostOnceToRestart) {
  const auto now = std::chrono::steady_clock::now();
  kelo.consume(now);
  EXPECT_EQ(host.restartRequests(), 0u);
  kelo.setRestartDue();
  EXPECT_FALSE(kelo.produce(now));  // produce says nothing of restarts
  kelo.consume(now);
  EXPECT_EQ(host.restartRequests(), 1u);
  kelo.consume(now);
  EXPECT_EQ(host.restartRequests(), 1u);
}

TEST_F(TimedTasksTest, AFailedRestartStaysDue) {
  const auto now = std::chrono::steady_clock::now();
  kelo.consume(now);
  const std::string session = kelo.getSessionId();
  kelo.setSessionId("not-a-session");
  kelo.setRestartDue();
  EXPECT_THROW(kelo.consume(now), tavelabi::NonExistentSessionException);
  kelo.setSessionId(session);
  kelo.consume(now);
  EXPECT_EQ(host.restartRequests(), 1u);
}

TEST_F(TimedTasksTest, ShutdownReportsStoppedWithoutTouchingTheStatus) {
  kelo.shutdown();
  ASSERT_EQ(statuses().size(), 1u);
  EXPECT_EQ(statuses()[0].code, PluginStatus::Stopped);
  EXPECT_EQ(statuses()[0].text, "Kelo Shutting down.");
  EXPECT_FALSE(kelo.isRunning());
  EXPECT_EQ(kelo.currentStatus().getCode(), PluginStatus::Ok);
  kelo.consume(std::chrono::steady_clock::now());
  EXPECT_EQ(statuses().back().code, PluginStatus::Ok);
}

// --- init and its failures ------------------------------------------------------------------

std::vector<std::pair<PluginStatus::Code, std::string>> history(sim::SimTavel& host) {
  std::vector<std::pair<PluginStatus::Code, std::string>> records;
  for (const auto& record : host.statusHistory()) {
    records.emplace_back(record.code, record.text);
  }
  return records;
}

using History = std::vector<std::pair<PluginStatus::Code, std::string>>;

TEST(KeloInitTest, BadConfigurationIsAConfigurationFailure) {
  KeloTestServer server;
  writeFile(server.configFile(), "{ not json");
  server.initOnly();
  EXPECT_EQ(history(server.host()),
            (History{{PluginStatus::ConfigurationFailure, "Configuration Failure"},
                     {PluginStatus::Stopped, "Kelo Shutting down."}}));
  EXPECT_FALSE(server.kelo().isRunning());
  EXPECT_FALSE(server.kelo().isWebServerConfigured());
  EXPECT_EQ(server.kelo().getId(), KeloTestServer::kPluginId);
}

TEST(KeloInitTest, RefusedCredentialsAreAnAuthenticationFailure) {
  KeloTestServerOptions options;
  options.configuredPassword = "wrong";
  KeloTestServer server(options);
  server.initOnly();
  EXPECT_EQ(history(server.host()),
            (History{{PluginStatus::Initializing, "Initializing"},
                     {PluginStatus::AuthenticationFailure, kLongAuthenticationText},
                     {PluginStatus::Stopped, "Kelo Shutting down."}}));
  EXPECT_FALSE(server.kelo().isRunning());
  EXPECT_FALSE(server.kelo().isWebServerConfigured());
  const std::string log = server.readLog();
  EXPECT_NE(log.find("Invalid username or password"), std::string::npos) << log;
  EXPECT_NE(log.find("Shutting Kelo down."), std::string::npos) << log;
}

TEST(KeloInitTest, LaterReportsStillShowTheFailure) {
  KeloTestServerOptions options;
  options.configuredPassword = "wrong";
  KeloTestServer server(options);
  server.initOnly();
  const auto now = std::chrono::steady_clock::now();
  // The status goes out first; the heartbeat then fails, since the session never logged in,
  // and its exception travels to the host.
  EXPECT_ANY_THROW(server.kelo().consume(now));
  server.kelo().produce(now + 6s);
  EXPECT_ANY_THROW(server.kelo().consume(now + 6s));
  const auto records = history(server.host());
  ASSERT_EQ(records.size(), 5u);
  for (std::size_t i = 3; i < records.size(); ++i) {
    EXPECT_EQ(records[i].first, PluginStatus::AuthenticationFailure);
    EXPECT_EQ(records[i].second, kLongAuthenticationText);
  }
}

class NoSessionHost : public sim::SimTavel {
 public:
  NoSessionHost() : sim::SimTavel(quietHost()) {}
  Resource createPluginSession(tavelabi::IPluginInfo*) override {
    throw std::runtime_error("no sessions today");
  }
};

TEST(KeloInitTest, ASessionThatIsNotMadeIsAnAuthenticationFailure) {
  KeloTestServer files;
  NoSessionHost host;
  Kelo kelo(&host);
  kelo.init(2, files.logConfigFile(), files.configFile());
  EXPECT_EQ(history(host),
            (History{{PluginStatus::Initializing, "Initializing"},
                     {PluginStatus::AuthenticationFailure, "Session is not generated"},
                     {PluginStatus::Stopped, "Kelo Shutting down."}}));
  const std::string log = readFile(files.directory().string() + "/logs/Kelo2.log");
  EXPECT_NE(log.find("no sessions today"), std::string::npos) << log;
}

TEST(KeloInitTest, ARefusedVersionRegistrationIsARuntimeFailure) {
  KeloTestServerOptions options;
  options.userRole = "read-only";
  KeloTestServer server(options);
  server.initOnly();
  const auto records = history(server.host());
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[1], std::make_pair(PluginStatus::RuntimeFailure,
                                       std::string("Unable to register version /versions/Kelo")));
  EXPECT_NE(server.readLog().find("Unable to register version /versions/Kelo"), std::string::npos);
  EXPECT_FALSE(server.host().peek("/versions/Kelo").has_value());
}

class FailingPathHost : public sim::SimTavel {
 public:
  explicit FailingPathHost(std::string failing)
      : sim::SimTavel(quietHost()), failingPath(std::move(failing)) {}
  Resource processResourceAction(ResourceAction& action) override {
    if (action.path == failingPath) {
      throw std::runtime_error("refused");
    }
    return sim::SimTavel::processResourceAction(action);
  }
  std::string failingPath;
};

void expectCreateFailure(const std::string& path, const std::string& text) {
  KeloTestServer files;
  FailingPathHost host(path);
  host.addUser({"kelo", "kelo-test-secret", "administrator", {}});
  Kelo kelo(&host);
  kelo.init(2, files.logConfigFile(), files.configFile());
  EXPECT_EQ(history(host), (History{{PluginStatus::Initializing, "Initializing"},
                                    {PluginStatus::RuntimeFailure, text},
                                    {PluginStatus::Stopped, "Kelo Shutting down."}}));
  EXPECT_NE(readFile(files.directory().string() + "/logs/Kelo2.log").find(text), std::string::npos);
  EXPECT_FALSE(kelo.isWebServerConfigured());
}

TEST(KeloInitTest, AFailedConnectivityTableIsARuntimeFailure) {
  expectCreateFailure("/kelo/websocketConnectivities",
                      "Unable to create websocket connectivities resource");
}

TEST(KeloInitTest, AFailedLocalhostListIsARuntimeFailure) {
  expectCreateFailure("/px3/localhostIp", "Unable to create PX3 localhost IP resource");
}

TEST(KeloInitTest, MissingCertificatesAreAConfigurationFailure) {
  KeloTestServerOptions options;
  options.makeCertificate = false;
  options.localhostIps = {"10.1.1.1", "10.1.1.2"};
  KeloTestServer server(options);
  server.initOnly();
  const std::string text = "Missing SSL certificates! Missing file: " + server.privateKeyFile() +
                           " No such file or directory";
  EXPECT_EQ(history(server.host()), (History{{PluginStatus::Initializing, "Initializing"},
                                             {PluginStatus::ConfigurationFailure, text},
                                             {PluginStatus::Stopped, "Kelo Shutting down."}}));
  EXPECT_NE(server.readLog().find(TermTint::brightRed(text)), std::string::npos);
  EXPECT_FALSE(server.kelo().isWebServerConfigured());
  EXPECT_FALSE(server.kelo().isRunning());

  // The steps before the certificates ran: session, login, the three resources.
  EXPECT_FALSE(server.kelo().getSessionId().empty());
  const auto version = server.host().peek("/versions/Kelo");
  ASSERT_TRUE(version.has_value());
  EXPECT_EQ(version->values.at("value").getStringValue(), server.kelo().getVersion());
  const auto table = server.host().peek("/kelo/websocketConnectivities");
  ASSERT_TRUE(table.has_value());
  EXPECT_TRUE(table->values.at("value").getMapValue().empty());
  const auto ips = server.host().peek("/px3/localhostIp");
  ASSERT_TRUE(ips.has_value());
  const auto& list = ips->values.at("value").getListValue();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].getStringValue(), "10.1.1.1");
  EXPECT_EQ(list[1].getStringValue(), "10.1.1.2");
  // The plug-in's session is logged in as its user.
  ResourceAction read(CCRUD::Read, "/session/sessions/" + server.kelo().getSessionId(), nullptr,
                      server.kelo().getSessionId());
  EXPECT_EQ(server.host().processResourceAction(read).values.at("username").getStringValue(),
            "kelo");

  const std::string log = server.readLog();
  EXPECT_NE(log.find("Initializing Kelo ..."), std::string::npos);
  EXPECT_NE(log.find("Configuration: "), std::string::npos);
}

// Which listeners the host holds now: added and not removed since.
class ListenerKeepingHost : public sim::SimTavel {
 public:
  ListenerKeepingHost() : sim::SimTavel(quietHost()) {}
  void addResourceListener(tavelabi::IPluginInfo* plugin,
                           tavelabi::IResourceListener* listener) override {
    {
      std::lock_guard lock(mutex);
      held.insert(listener);
    }
    sim::SimTavel::addResourceListener(plugin, listener);
  }
  void removeResourceListener(tavelabi::IPluginInfo* plugin,
                              tavelabi::IResourceListener* listener) override {
    sim::SimTavel::removeResourceListener(plugin, listener);
    std::lock_guard lock(mutex);
    held.erase(listener);
  }
  std::size_t heldCount() {
    std::lock_guard lock(mutex);
    return held.size();
  }

 private:
  std::mutex mutex;
  std::set<tavelabi::IResourceListener*> held;
};

TEST(KeloInitTest, ASecondInitLeavesTheHostOneLiveCertificateListener) {
  KeloTestServer files;
  ListenerKeepingHost host;
  host.addUser({"kelo", "kelo-test-secret", "administrator", {}});
  Kelo kelo(&host);
  kelo.init(2, files.logConfigFile(), files.configFile());
  ASSERT_TRUE(kelo.isRunning()) << kelo.currentStatus().getText();
  kelo.init(2, files.logConfigFile(), files.configFile());
  EXPECT_TRUE(kelo.isRunning()) << kelo.currentStatus().getText();
  EXPECT_EQ(host.heldCount(), 1u);

  // The host calls what it holds: the listener answers the command in its reply (an empty
  // upload folder is refused in words).
  const std::filesystem::path empty =
      std::filesystem::temp_directory_path() / ("kelo-empty-upload-" + std::to_string(::getpid()));
  std::filesystem::create_directories(empty);
  Resource request;
  request.addValue("uploadTarget", ResourceValue(empty.string()));
  request.addValue("password", ResourceValue(std::string()));
  ResourceAction apply(CCRUD::Command, "/command/applyCertificate", request, nullptr, "");
  const Resource answer = host.processInternalAction(apply);
  std::filesystem::remove_all(empty);
  EXPECT_EQ(answer.values.count("errorMessage"), 1u);

  web::app().quit();
  kelo.joinServerThread();
  kelo.shutdown();
  EXPECT_EQ(host.heldCount(), 0u);
}

TEST(KeloInitTest, AMissingWebConfigurationIsARuntimeFailureWithoutAServer) {
  KeloTestServer server;
  std::filesystem::remove(server.webConfigFile());
  EXPECT_NO_THROW(server.initOnly());
  const auto records = history(server.host());
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0], std::make_pair(PluginStatus::Initializing, std::string("Initializing")));
  EXPECT_EQ(records[1].first, PluginStatus::RuntimeFailure);
  EXPECT_EQ(records[1].second.rfind("Drogon : ", 0), 0u) << records[1].second;
  EXPECT_NE(records[1].second.find(server.webConfigFile()), std::string::npos) << records[1].second;
  EXPECT_EQ(records[2], std::make_pair(PluginStatus::Stopped, std::string("Kelo Shutting down.")));
  EXPECT_EQ(server.kelo().currentStatus().getCode(), PluginStatus::RuntimeFailure);
  EXPECT_FALSE(server.kelo().isRunning());
  EXPECT_FALSE(server.kelo().isWebServerConfigured());
  EXPECT_NE(server.readLog().find(server.webConfigFile()), std::string::npos);
  std::this_thread::sleep_for(200ms);
  EXPECT_FALSE(web::app().isRunning());
}

}  // namespace
}  // namespace halvor::kelo
