// tavel-sim: the simulated host program. See docs/SIMULATOR.md.

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "sim/CommandLine.h"
#include "sim/Console.h"
#include "sim/FixtureLoader.h"
#include "sim/HostLoop.h"
#include "sim/HostSeed.h"
#include "sim/PluginLoader.h"
#include "sim/SimTavel.h"

namespace {

using halvor::sim::Console;

constexpr int kExitBadInput = 2;
constexpr int kExitBadPlugin = 3;

// SIGINT and SIGTERM are blocked in every thread (threads inherit the mask, so this runs before
// any thread starts) and read from a signalfd by the main loop: no work in a signal handler.
int blockStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  int fd = signalfd(-1, &signals, SFD_CLOEXEC);
  if (fd < 0) {
    Console::errorLine("tavel-sim: cannot create a signalfd");
    std::exit(1);
  }
  return fd;
}

std::vector<halvor::sim::Fixture> loadFixtures(const std::vector<std::string>& files) {
  std::vector<halvor::sim::Fixture> fixtures;
  for (const std::string& file : files)
    fixtures.push_back(halvor::sim::FixtureLoader::loadFile(file));
  return fixtures;
}

void seedHost(halvor::sim::SimTavel& host, const std::vector<halvor::sim::Fixture>& fixtures,
              const halvor::sim::CommandLineOptions& options) {
  halvor::sim::HostSeed::seed(host, fixtures, options.demoModels);
  for (const auto& fixture : fixtures) {
    for (const auto& user : fixture.users) {
      Console::line("demo user " + user.name + " (" + user.role + ") password " + user.password);
    }
  }
  if (options.sessionTimeoutSeconds) {
    host.setSessionTimeout(std::chrono::seconds(*options.sessionTimeoutSeconds));
  }
  for (const auto& [sessionId, user] : options.sessions) {
    host.openSession(user, sessionId);
    Console::line("session " + sessionId + " logged in as " + user);
  }
}

int runHost(const halvor::sim::CommandLineOptions& options, int stopFd) {
  std::vector<halvor::sim::Fixture> fixtures;
  try {
    fixtures = loadFixtures(options.fixtureFiles);
  } catch (const std::exception& error) {
    Console::errorLine(std::string("tavel-sim: bad fixture ") + error.what());
    return kExitBadInput;
  }
  // The host outlives the plug-in's threads: it is never destroyed (see the end of main).
  auto* host = new halvor::sim::SimTavel();
  try {
    seedHost(*host, fixtures, options);
  } catch (const std::exception& error) {
    Console::errorLine(std::string("tavel-sim: ") + error.what());
    return kExitBadInput;
  }
  if (!options.webConfigFile.empty()) {
    Console::line("web configuration " + options.webConfigFile + " (read by the plug-in)");
  }
  std::unique_ptr<halvor::sim::PluginLoader> plugin;
  try {
    plugin = std::make_unique<halvor::sim::PluginLoader>(options.pluginPath);
    plugin->createPlugin(host);
  } catch (const std::exception& error) {
    Console::errorLine(std::string("tavel-sim: ") + error.what());
    return kExitBadPlugin;
  }
  Console::line("tavel-sim: loaded " + options.pluginPath + ", calling init");
  try {
    plugin->plugin()->init(options.pluginId, options.logConfigFile, options.configFile);
  } catch (const std::exception& error) {
    Console::errorLine(std::string("tavel-sim: init threw: ") + error.what());
  }

  auto lastExpiry = halvor::tavelabi::TimePoint{};
  halvor::sim::HostLoop loop(*plugin, [&](const halvor::tavelabi::TimePoint& now) {
    host->tickModels(now);
    if (now - lastExpiry >= std::chrono::seconds(1)) {
      host->expireIdleSessions();
      lastExpiry = now;
    }
  });
  Console::line("tavel-sim: running; SIGINT or SIGTERM stops");
  loop.run(stopFd);

  Console::line("tavel-sim: stopping the plug-in");
  plugin->plugin()->shutdown();
  plugin->destroyPlugin();
  Console::line("tavel-sim: stopped");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  halvor::sim::CommandLineOptions options;
  try {
    options = halvor::sim::CommandLine::parse(argc, argv);
  } catch (const halvor::sim::CommandLineError& error) {
    Console::errorLine(std::string("tavel-sim: ") + error.what());
    return kExitBadInput;
  }
  if (options.help) {
    std::fputs(halvor::sim::CommandLine::usage().c_str(), stdout);
    return 0;
  }
  int stopFd = blockStopSignals();
  int status = runHost(options, stopFd);
  // Threads that the plug-in left running (a detached server thread) may still call the host
  // or run code of the library; ending the process here, without static destructors, keeps
  // them from meeting half-destroyed objects.
  std::fflush(stdout);
  std::fflush(stderr);
  std::_Exit(status);
}
