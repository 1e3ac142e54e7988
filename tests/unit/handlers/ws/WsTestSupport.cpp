#include "unit/handlers/ws/WsTestSupport.h"

#include <json/value.h>

#include <map>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/Registrations.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpRequest.h"
#include "sim/HostSeed.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

namespace {

std::mutex capturedMutex;
std::map<std::string, std::vector<LogCapture::Line>> captured;

}  // namespace

class LogCapture::Callback : public el::LogDispatchCallback {
 protected:
  void handle(const el::LogDispatchData* data) override {
    const el::LogMessage* message = data->logMessage();
    std::lock_guard<std::mutex> lock(capturedMutex);
    auto found = captured.find(message->logger()->id());
    if (found != captured.end()) {
      found->second.push_back({message->level(), message->message()});
    }
  }
};

LogCapture::LogCapture(std::string id) : loggerId(std::move(id)) {
  el::Logger* logger = el::Loggers::getLogger(loggerId, true);
  el::Configurations quiet;
  quiet.setToDefault();
  quiet.set(el::Level::Global, el::ConfigurationType::Enabled, "true");
  quiet.set(el::Level::Global, el::ConfigurationType::ToStandardOutput, "false");
  quiet.set(el::Level::Global, el::ConfigurationType::ToFile, "false");
  el::Loggers::reconfigureLogger(logger, quiet);
  el::Helpers::installLogDispatchCallback<Callback>("WsLogCapture");
  std::lock_guard<std::mutex> lock(capturedMutex);
  captured[loggerId].clear();
}

LogCapture::~LogCapture() {
  std::lock_guard<std::mutex> lock(capturedMutex);
  captured.erase(loggerId);
}

std::vector<LogCapture::Line> LogCapture::lines() const {
  std::lock_guard<std::mutex> lock(capturedMutex);
  return captured.at(loggerId);
}

std::size_t LogCapture::count(el::Level level, const std::string& part) const {
  std::size_t n = 0;
  for (const auto& line : lines()) {
    if (line.level == level && line.text.find(part) != std::string::npos) ++n;
  }
  return n;
}

std::size_t LogCapture::count(const std::string& part) const {
  std::size_t n = 0;
  for (const auto& line : lines()) {
    if (line.text.find(part) != std::string::npos) ++n;
  }
  return n;
}

void LogCapture::clear() {
  std::lock_guard<std::mutex> lock(capturedMutex);
  captured.at(loggerId).clear();
}

WsUnitHost::WsUnitHost() {
  sim::SimTavelOptions options;
  options.echoToConsole = false;
  tavel = std::make_unique<sim::SimTavel>(options);
  sim::HostSeed::seed(*tavel, {}, true);
  tavel->addUser({"kelo", "kelo-secret", "administrator", {}});
  tavel->addUser({"admin", "admin-test", "administrator", {}});
  tavel->addUser({"viewer", "viewer-test", "read-only", {}});

  kelo = std::make_unique<Kelo>(tavel.get());
  kelo->setLoggerId(kLoggerId);
  kelo->setSessionId(tavel->openSession("kelo"));

  tavelabi::ResourceAction createTable(
      tavelabi::CCRUD::Create, kConnectivities,
      tavelabi::Resource(tavelabi::ResourceValue(tavelabi::ResourceValue::Map())), kelo.get(),
      kelo->getSessionId());
  tavel->processResourceAction(createTable);
  tavelabi::ResourceAction createLocal(
      tavelabi::CCRUD::Create, "/px3/localhostIp",
      tavelabi::Resource(tavelabi::ResourceValue(std::vector<std::string>{"127.0.0.1"})),
      kelo.get(), kelo->getSessionId());
  tavel->processResourceAction(createLocal);

  web::HttpAppFramework& application = web::app();
  Registrations::registerPluginTypes(application);
  Json::Value config;
  Json::Value interface;
  interface["name"] = "WebKeloInterface";
  Json::Value manager;
  manager["name"] = "ResourceListenerManager";
  config["plugins"].append(interface);
  config["plugins"].append(manager);
  application.loadConfigJson(config);
  auto* keloInterface = application.getPlugin<WebKeloInterface>();
  keloInterface->tavel = tavel.get();
  keloInterface->pluginInfo = kelo.get();
  application.getPlugin<ResourceListenerManager>()->setLoggerId(kLoggerId);
}

WsUnitHost::~WsUnitHost() {
  // Unregister every instance while the host still exists.
  manager().removeAllClients();
  auto* keloInterface = web::app().getPlugin<WebKeloInterface>();
  keloInterface->tavel = nullptr;
  keloInterface->pluginInfo = nullptr;
  kelo.reset();
  tavel.reset();
}

ResourceListenerManager& WsUnitHost::manager() {
  return *web::app().getPlugin<ResourceListenerManager>();
}

std::string WsUnitHost::openSession(const std::string& user) { return tavel->openSession(user); }

tavelabi::ResourceValue::Map WsUnitHost::connectivities() {
  return tavel->peek(kConnectivities).value().values.at("value").getMapValue();
}

void WsUnitHost::setConnectivity(const std::string& ip, int count) {
  tavelabi::ResourceValue::Map table = connectivities();
  table[ip] = tavelabi::ResourceValue(count);
  hostAction(tavelabi::CCRUD::Update, kConnectivities,
             tavelabi::Resource(tavelabi::ResourceValue(table)));
}

void WsUnitHost::clearConnectivities() {
  hostAction(tavelabi::CCRUD::Update, kConnectivities,
             tavelabi::Resource(tavelabi::ResourceValue(tavelabi::ResourceValue::Map())));
}

void WsUnitHost::hostAction(tavelabi::CCRUD verb, const std::string& path,
                            const tavelabi::Resource& resource) {
  tavelabi::ResourceAction action(verb, path, resource, nullptr, "");
  tavel->processInternalAction(action);
  tavel->waitForListeners();
}

void WsUnitHost::update(const std::string& path, int value) {
  hostAction(tavelabi::CCRUD::Update, path, tavelabi::Resource(tavelabi::ResourceValue(value)));
}

int valueOfResourceFrame(const std::string& frame) {
  protobuf::Resource message;
  if (!message.ParseFromString(frame)) {
    throw std::runtime_error("not a Resource message");
  }
  return message.values().at("value").intvalue().value();
}

}  // namespace halvor::kelo::test
