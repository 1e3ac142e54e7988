#include "kelo/web/Log.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace halvor::kelo::web {
namespace {

std::atomic<int> gThreshold{kError};
std::mutex gSinkMutex;
// Replaced as a whole, so that a line being written keeps the sink it started with.
std::shared_ptr<const LogSink> gSink;

}  // namespace

void setLogSink(LogSink sink) {
  auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
  std::lock_guard lock(gSinkMutex);
  gSink = std::move(next);
}

void setLogThreshold(int level) { gThreshold.store(level, std::memory_order_relaxed); }

int logThreshold() { return gThreshold.load(std::memory_order_relaxed); }

bool logEnabled(int level) { return level >= logThreshold(); }

void logLine(int level, const std::string& line) {
  if (!logEnabled(level)) return;
  std::shared_ptr<const LogSink> sink;
  {
    std::lock_guard lock(gSinkMutex);
    sink = gSink;
  }
  if (sink) (*sink)(level, line);
}

}  // namespace halvor::kelo::web
