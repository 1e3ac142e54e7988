// A small plug-in for the simulator's tests: it logs in with the credentials of its
// configuration file, creates one resource, counts produce and consume calls and reports them
// in its status texts.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "tavelabi/PluginEntryPoints.h"
#include "tavelabi/tavelabi.h"

namespace {

using halvor::tavelabi::PluginStatus;
using halvor::tavelabi::TimePoint;

class TestPlugin;
TestPlugin* thePlugin = nullptr;

class TestPlugin : public halvor::tavelabi::BasePlugin {
 public:
  explicit TestPlugin(halvor::tavelabi::ITavel* tavel) : BasePlugin(tavel) {
    setName("TestPlugin");
    setVersion("1.0.0");
  }
  ~TestPlugin() override { thePlugin = nullptr; }

  void init(const uint32_t& id, const std::string& logConfigFile,
            const std::string& configFile) override {
    setId(id);
    std::printf("test-plugin: init id=%u log=%s config=%s\n", id, logConfigFile.c_str(),
                configFile.c_str());
    std::fflush(stdout);
    report(PluginStatus::Initializing, "Initializing");
    Json::Value config;
    try {
      config = halvor::tavelabi::JsonConfigLoader::loadJsonConfigFile(configFile);
    } catch (const std::exception& error) {
      report(PluginStatus::ConfigurationFailure, error.what());
      return;
    }
    throwInConsume_ = config["throwInConsume"].asBool();
    if (!logIn(config["UserName"].asString(), config["Password"].asString())) return;
    try {
      halvor::tavelabi::ResourceAction started(
          halvor::tavelabi::CCRUD::Create, "/testplugin/started",
          halvor::tavelabi::Resource(halvor::tavelabi::ResourceValue(true)), this, getSessionId());
      getTavelInterface()->processResourceAction(started);
    } catch (const std::exception& error) {
      report(PluginStatus::RuntimeFailure, error.what());
      return;
    }
    if (config.isMember("probeSession")) probeSession(config["probeSession"].asString());
    report(PluginStatus::Ok, "OK");
  }

  void shutdown() override {
    printDemoCounter();
    report(PluginStatus::Stopped, "stopped " + counts());
  }

  bool produce(const TimePoint& /*now*/) override {
    produced_.fetch_add(1);
    return true;
  }

  void consume(const TimePoint& now) override {
    std::uint64_t consumed = consumed_.fetch_add(1) + 1;
    if (now - lastReport_ >= std::chrono::seconds(1)) {
      lastReport_ = now;
      report(PluginStatus::Ok, counts());
    }
    if (throwInConsume_ && consumed % 50 == 0) throw std::runtime_error("consume fails on purpose");
  }

  std::uint64_t produced() const { return produced_.load(); }
  std::uint64_t consumed() const { return consumed_.load(); }

 private:
  bool logIn(const std::string& user, const std::string& password) {
    auto* host = getTavelInterface();
    try {
      auto session =
          halvor::tavelabi::Session::convertResourceToSession(host->createPluginSession(this));
      setSessionId(session.sessionId);
      host->loginPlugin(this, user, password, session);
      return true;
    } catch (const std::exception& error) {
      report(PluginStatus::AuthenticationFailure, error.what());
      return false;
    }
  }

  // Prints who is logged in on a session that the host was told to make.
  void probeSession(const std::string& sessionId) {
    try {
      halvor::tavelabi::ResourceAction read(halvor::tavelabi::CCRUD::Read,
                                            "/session/sessions/" + sessionId, this, getSessionId());
      auto answer = getTavelInterface()->processResourceAction(read);
      say("session " + sessionId + " user " + answer.values.at("username").getStringValue());
    } catch (const std::exception& error) {
      say("session " + sessionId + " failed: " + error.what());
    }
  }

  void printDemoCounter() {
    try {
      halvor::tavelabi::ResourceAction read(halvor::tavelabi::CCRUD::Read, "/demo/counter", this,
                                            getSessionId());
      auto answer = getTavelInterface()->processResourceAction(read);
      say("demo counter " + std::to_string(answer.values.at("value").getIntValue()));
    } catch (const std::exception& error) {
      say(std::string("no demo counter: ") + error.what());
    }
  }

  static void say(const std::string& text) {
    std::printf("test-plugin: %s\n", text.c_str());
    std::fflush(stdout);
  }

  void report(PluginStatus::Code code, const std::string& text) {
    getTavelInterface()->setPluginStatus(this, PluginStatus(code, text));
  }

  std::string counts() const {
    return "produce=" + std::to_string(produced()) + " consume=" + std::to_string(consumed());
  }

  std::atomic<std::uint64_t> produced_{0};
  std::atomic<std::uint64_t> consumed_{0};
  TimePoint lastReport_{};
  bool throwInConsume_ = false;
};

}  // namespace

extern "C" {

halvor::tavelabi::BasePlugin* create(halvor::tavelabi::ITavel* tavel) {
  thePlugin = new TestPlugin(tavel);
  return thePlugin;
}

bool produce(const TimePoint& now) { return thePlugin->produce(now); }

void consume(const TimePoint& now) { thePlugin->consume(now); }

// For tests that load the library in their own process.
void testPluginCounts(std::uint64_t* produced, std::uint64_t* consumed) {
  *produced = thePlugin == nullptr ? 0 : thePlugin->produced();
  *consumed = thePlugin == nullptr ? 0 : thePlugin->consumed();
}
}
