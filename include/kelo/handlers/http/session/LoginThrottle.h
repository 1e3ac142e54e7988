#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>

namespace halvor::kelo {

// Counts failed logins per client address. Once an address has failed `limit` times within a
// minute of its first failure, it must wait until that minute has passed; then its count starts
// again. Other addresses are not affected, and a successful login neither counts nor is refused
// while the address is below the limit. Safe for concurrent use by every I/O thread.
class LoginThrottle {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  static constexpr unsigned kDefaultFailuresPerMinute = 10;

  explicit LoginThrottle(Clock clock = {});

  // The one throttle of the process, which the login route uses.
  static LoginThrottle& shared();

  // Failures per address and minute before further attempts wait; 0 turns throttling off.
  void setLimit(unsigned failuresPerMinute);
  unsigned limit() const;

  // Whole seconds until the address may try again (rounded up); 0 when it may try now.
  std::uint32_t secondsToWait(const std::string& address);
  void recordFailure(const std::string& address);
  // Forgets every address.
  void clear();

 private:
  struct Window {
    std::chrono::steady_clock::time_point start;
    unsigned failures = 0;
  };
  static constexpr std::chrono::seconds kWindow{60};
  // Above this many addresses, those whose minute has passed are dropped at the next failure.
  static constexpr std::size_t kPruneAbove = 4096;

  // Requires mutex_.
  void pruneIfLarge(std::chrono::steady_clock::time_point now);

  Clock clock_;
  mutable std::mutex mutex_;
  unsigned limit_ = kDefaultFailuresPerMinute;
  std::unordered_map<std::string, Window> windows_;
};

}  // namespace halvor::kelo
