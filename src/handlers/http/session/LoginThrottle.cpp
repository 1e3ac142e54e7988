#include "kelo/handlers/http/session/LoginThrottle.h"

#include <utility>

namespace halvor::kelo {

LoginThrottle::LoginThrottle(Clock clock)
    : clock_(clock ? std::move(clock) : Clock(&std::chrono::steady_clock::now)) {}

LoginThrottle& LoginThrottle::shared() {
  static LoginThrottle throttle;
  return throttle;
}

void LoginThrottle::setLimit(unsigned failuresPerMinute) {
  std::lock_guard lock(mutex_);
  limit_ = failuresPerMinute;
}

unsigned LoginThrottle::limit() const {
  std::lock_guard lock(mutex_);
  return limit_;
}

std::uint32_t LoginThrottle::secondsToWait(const std::string& address) {
  const auto now = clock_();
  std::lock_guard lock(mutex_);
  if (limit_ == 0) return 0;
  const auto found = windows_.find(address);
  if (found == windows_.end()) return 0;
  const auto end = found->second.start + kWindow;
  if (now >= end) {
    windows_.erase(found);
    return 0;
  }
  if (found->second.failures < limit_) return 0;
  // Rounded up, so that a client that waits as told finds the minute over.
  const auto left = std::chrono::ceil<std::chrono::seconds>(end - now);
  return static_cast<std::uint32_t>(left.count());
}

void LoginThrottle::recordFailure(const std::string& address) {
  const auto now = clock_();
  std::lock_guard lock(mutex_);
  if (limit_ == 0) return;
  pruneIfLarge(now);
  Window& window = windows_[address];
  if (window.failures == 0 || now >= window.start + kWindow) {
    window.start = now;
    window.failures = 0;
  }
  ++window.failures;
}

void LoginThrottle::clear() {
  std::lock_guard lock(mutex_);
  windows_.clear();
}

void LoginThrottle::pruneIfLarge(std::chrono::steady_clock::time_point now) {
  if (windows_.size() <= kPruneAbove) return;
  std::erase_if(windows_, [&](const auto& entry) { return now >= entry.second.start + kWindow; });
}

}  // namespace halvor::kelo
