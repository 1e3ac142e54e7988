// tavel-sim: the simulated host program. See docs/SIMULATOR.md.

#include <linux/close_range.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <thread>
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
// How long a restart waits, after the plug-in was shut down, before the program starts anew.
constexpr std::chrono::milliseconds kRestartGrace{1000};

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

// The loop ends on a stop signal or on a restart request: one descriptor, readable when either
// is, for HostLoop::run.
struct StopOrRestart {
  int restartFd = -1;
  int eitherFd = -1;
};

StopOrRestart watchStopAndRestart(int stopFd) {
  StopOrRestart fds;
  fds.restartFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  fds.eitherFd = epoll_create1(EPOLL_CLOEXEC);
  if (fds.restartFd < 0 || fds.eitherFd < 0) {
    Console::errorLine("tavel-sim: cannot watch for restarts");
    std::exit(1);
  }
  for (int fd : {stopFd, fds.restartFd}) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    epoll_ctl(fds.eitherFd, EPOLL_CTL_ADD, fd, &event);
  }
  return fds;
}

bool restartRequested(int restartFd) {
  std::uint64_t count = 0;
  return read(restartFd, &count, sizeof count) == static_cast<ssize_t>(sizeof count) && count > 0;
}

int runHost(const halvor::sim::CommandLineOptions& options, int stopFd, bool& restart) {
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
  const StopOrRestart watched = watchStopAndRestart(stopFd);
  // The command "/command/restartTavel" (the plug-in asks for it when its server identity has
  // changed) ends the loop like a stop signal; main then starts the program anew.
  host->setRestartHandler([fd = watched.restartFd] {
    const std::uint64_t one = 1;
    (void)!write(fd, &one, sizeof one);
  });
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
  loop.run(watched.eitherFd);
  restart = restartRequested(watched.restartFd);

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
  bool restart = false;
  int status = runHost(options, stopFd, restart);
  if (restart) {
    // The plug-in's server goes on answering until the process ends, and the request that led
    // to the restart (the upload of a new certificate) may not have had its answer written yet:
    // the plug-in asks for the restart from its next `consume`, whatever its I/O threads are
    // still doing. Like a real host, which takes seconds to come back, this one lets the answers
    // on their way go out before the exec closes every socket.
    std::this_thread::sleep_for(kRestartGrace);
    // The same program with the same arguments; no descriptor of this run survives the exec,
    // so the listening ports are free again.
    Console::line("tavel-sim: restarting");
    std::fflush(stdout);
    std::fflush(stderr);
    syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC);
    execv("/proc/self/exe", argv);
    Console::errorLine("tavel-sim: restart failed");
    status = 1;
  }
  // Threads that the plug-in left running (a detached server thread) may still call the host
  // or run code of the library; ending the process here, without static destructors, keeps
  // them from meeting half-destroyed objects.
  std::fflush(stdout);
  std::fflush(stderr);
  std::_Exit(status);
}
