#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <thread>

#include "SimTestSupport.h"
#include "sim/HostLoop.h"
#include "sim/PluginLoader.h"

namespace halvor::sim {
namespace {

using tavelabi::PluginStatus;
using CountsFunction = void (*)(std::uint64_t*, std::uint64_t*);

// The process id in the name: ctest runs each test case as a process of its own, several at once.
std::string writeFile(const std::string& name, const std::string& text) {
  std::string path = ::testing::TempDir() + std::to_string(::getpid()) + "-" + name;
  std::ofstream(path) << text;
  return path;
}

std::string configFile(const std::string& password, bool throwInConsume = false) {
  return writeFile("plugin-loader-config.json", R"({"UserName": "kelo", "Password": ")" + password +
                                                    R"(", "throwInConsume": )" +
                                                    (throwInConsume ? "true" : "false") + "}");
}

struct LoadedPlugin {
  LoadedPlugin() : host(kelo::test::HostWithUsers::quietOptions()), loader(TEST_PLUGIN_PATH) {
    host.addUser({"kelo", "secret", "administrator", {}});
  }

  std::pair<std::uint64_t, std::uint64_t> counts() const {
    auto function = reinterpret_cast<CountsFunction>(loader.symbol("testPluginCounts"));
    std::uint64_t produced = 0;
    std::uint64_t consumed = 0;
    function(&produced, &consumed);
    return {produced, consumed};
  }

  SimTavel host;
  PluginLoader loader;
};

TEST(PluginLoaderTest, CreatesAndInitsThePlugin) {
  LoadedPlugin loaded;
  tavelabi::BasePlugin& plugin = loaded.loader.createPlugin(&loaded.host);
  EXPECT_EQ("TestPlugin", plugin.getName());
  EXPECT_EQ(&loaded.host, plugin.getTavelInterface());
  plugin.init(9, "log.conf", configFile("secret"));
  EXPECT_EQ(9u, plugin.getId());
  auto history = loaded.host.statusHistory();
  ASSERT_EQ(2u, history.size());
  EXPECT_EQ(PluginStatus::Initializing, history[0].code);
  EXPECT_EQ(PluginStatus::Ok, history[1].code);
  EXPECT_TRUE(loaded.host.peek("/testplugin/started").has_value());
  tavelabi::TimePoint now{};
  EXPECT_TRUE(loaded.loader.produce(now));
  loaded.loader.consume(now);
  EXPECT_EQ(std::make_pair(std::uint64_t{1}, std::uint64_t{1}), loaded.counts());
  loaded.loader.destroyPlugin();
  EXPECT_EQ(nullptr, loaded.loader.plugin());
}

TEST(PluginLoaderTest, WrongCredentialsGiveAnAuthenticationFailure) {
  LoadedPlugin loaded;
  loaded.loader.createPlugin(&loaded.host).init(1, "log.conf", configFile("wrong"));
  auto history = loaded.host.statusHistory();
  ASSERT_EQ(2u, history.size());
  EXPECT_EQ(PluginStatus::AuthenticationFailure, history[1].code);
  EXPECT_EQ("Invalid username or password", history[1].text);
}

TEST(PluginLoaderTest, MissingLibraryIsOneLineNamingIt) {
  try {
    PluginLoader loader("/nonexistent/libnothing.so");
    FAIL() << "no exception";
  } catch (const PluginLoadError& error) {
    std::string text = error.what();
    EXPECT_EQ(0u, text.find("cannot load plug-in /nonexistent/libnothing.so: ")) << text;
    EXPECT_EQ(std::string::npos, text.find('\n'));
  }
}

TEST(PluginLoaderTest, MissingEntryPointIsNamed) {
  try {
    PluginLoader loader(INCOMPLETE_PLUGIN_PATH);
    FAIL() << "no exception";
  } catch (const PluginLoadError& error) {
    std::string text = error.what();
    EXPECT_NE(std::string::npos, text.find(std::string("plug-in ") + INCOMPLETE_PLUGIN_PATH +
                                           " lacks the entry point produce"))
        << text;
  }
}

TEST(PluginLoaderTest, LibraryThatIsNoPluginIsRefused) {
  EXPECT_THROW(PluginLoader("libm.so.6"), PluginLoadError);
}

TEST(PluginLoaderTest, CreateWithoutObjectIsRefused) {
  SimTavel host(kelo::test::HostWithUsers::quietOptions());
  PluginLoader loader(NULL_PLUGIN_PATH);
  try {
    loader.createPlugin(&host);
    FAIL() << "no exception";
  } catch (const PluginLoadError& error) {
    EXPECT_NE(std::string::npos, std::string(error.what()).find("create gave no object"));
  }
}

class StopEvent {
 public:
  StopEvent() : fd_(eventfd(0, EFD_CLOEXEC)) {}
  ~StopEvent() { close(fd_); }
  int fd() const { return fd_; }
  void signal() const {
    std::uint64_t one = 1;
    EXPECT_EQ(static_cast<ssize_t>(sizeof one), write(fd_, &one, sizeof one));
  }

 private:
  int fd_;
};

TEST(PluginLoaderTest, HostLoopCallsProduceAndConsumeAboutAHundredTimesASecond) {
  LoadedPlugin loaded;
  loaded.loader.createPlugin(&loaded.host).init(1, "log.conf", configFile("secret"));
  std::atomic<int> ticks{0};
  HostLoop loop(loaded.loader, [&](const tavelabi::TimePoint&) { ticks.fetch_add(1); });
  StopEvent stop;
  auto start = std::chrono::steady_clock::now();
  std::thread runner([&] { loop.run(stop.fd()); });
  std::this_thread::sleep_for(std::chrono::seconds(1));
  stop.signal();
  runner.join();
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  auto [produced, consumed] = loaded.counts();
  EXPECT_EQ(produced, consumed);
  EXPECT_EQ(produced, loop.passes());
  EXPECT_EQ(static_cast<int>(produced), ticks.load());
  double rate = static_cast<double>(produced) / seconds;
  EXPECT_GE(rate, 30.0);
  EXPECT_LE(rate, 200.0);
}

TEST(PluginLoaderTest, ExceptionFromConsumeIsPrintedAndTheLoopGoesOn) {
  LoadedPlugin loaded;
  loaded.loader.createPlugin(&loaded.host).init(1, "log.conf", configFile("secret", true));
  HostLoop loop(loaded.loader, {});
  StopEvent stop;
  ::testing::internal::CaptureStderr();
  std::thread runner([&] { loop.run(stop.fd()); });
  while (loaded.counts().second < 120) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  stop.signal();
  runner.join();
  std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, err.find("tavel-sim: consume threw: consume fails on purpose"))
      << err;
  EXPECT_GE(loaded.counts().second, 120u);
}

}  // namespace
}  // namespace halvor::sim
