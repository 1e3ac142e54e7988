#include "sim/HostLoop.h"

#include <poll.h>

#include <cerrno>
#include <exception>
#include <utility>

#include "sim/Console.h"
#include "sim/PluginLoader.h"

namespace halvor::sim {

namespace {

tavelabi::TimePoint steadyNow() {
  return std::chrono::time_point_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now());
}

void report(const char* step, const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& caught) {
    Console::errorLine(std::string("tavel-sim: ") + step + " threw: " + caught.what());
  } catch (...) {
    Console::errorLine(std::string("tavel-sim: ") + step + " threw an unknown exception");
  }
}

}  // namespace

HostLoop::HostLoop(PluginLoader& plugin, Tick tick) : plugin_(plugin), tick_(std::move(tick)) {}

void HostLoop::pass(const tavelabi::TimePoint& now) {
  try {
    plugin_.produce(now);
  } catch (...) {
    report("produce", std::current_exception());
  }
  // consume runs on every pass: the plug-in's own flags say whether it has work.
  try {
    plugin_.consume(now);
  } catch (...) {
    report("consume", std::current_exception());
  }
  if (tick_) {
    try {
      tick_(now);
    } catch (...) {
      report("host tick", std::current_exception());
    }
  }
  ++passes_;
}

bool HostLoop::waitForStop(int stopFd, tavelabi::TimePoint until) {
  while (true) {
    auto left = std::chrono::ceil<std::chrono::milliseconds>(until - steadyNow());
    pollfd watched{stopFd, POLLIN, 0};
    int ready = poll(&watched, 1, left.count() > 0 ? static_cast<int>(left.count()) : 0);
    if (ready > 0) return true;
    if (ready == 0) return false;
    if (errno != EINTR) return true;  // a broken descriptor would otherwise spin forever
  }
}

void HostLoop::run(int stopFd) {
  tavelabi::TimePoint next = steadyNow();
  while (true) {
    tavelabi::TimePoint now = steadyNow();
    pass(now);
    next += kPeriod;
    // After a long stall the loop starts afresh instead of running a burst of passes.
    tavelabi::TimePoint after = steadyNow();
    if (next < after) next = after + kPeriod;
    if (waitForStop(stopFd, next)) return;
  }
}

}  // namespace halvor::sim
