#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_map>

namespace halvor::kelo::web {

// Counts open connections, in all and per peer address, and refuses those beyond the limits.
class ConnectionLimiter {
 public:
  // One admitted connection; gives its place back when destroyed.
  class Slot {
   public:
    Slot() = default;
    Slot(ConnectionLimiter* limiter, std::string ip) : limiter_(limiter), ip_(std::move(ip)) {}
    Slot(Slot&& other) noexcept : limiter_(other.limiter_), ip_(std::move(other.ip_)) {
      other.limiter_ = nullptr;
    }
    Slot& operator=(Slot&& other) noexcept;
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;
    ~Slot() { release(); }

   private:
    void release();
    ConnectionLimiter* limiter_ = nullptr;
    std::string ip_;
  };

  // 0 for maxPerIp means no limit per address.
  void configure(std::size_t maxTotal, std::size_t maxPerIp);
  // The connections a process with `descriptorLimit` descriptors can hold: the limit less a
  // reserve for listeners, log, temporary body files, the host's own files and the like.
  static std::size_t descriptorRoom(std::size_t descriptorLimit);
  // The total to configure: `configured` (0: no wish) capped by the room that the process's
  // current descriptor limit (RLIMIT_NOFILE, soft) leaves.
  static std::size_t effectiveMaximum(std::size_t configured);
  // True and `slot` filled when the connection may stay.
  bool tryAdmit(const std::string& ip, Slot& slot);
  std::size_t count() const { return total_.load(std::memory_order_relaxed); }

 private:
  void release(const std::string& ip);

  std::size_t maxTotal_ = 0;
  std::size_t maxPerIp_ = 0;
  std::atomic<std::size_t> total_{0};
  std::mutex mutex_;
  std::unordered_map<std::string, std::size_t> perIp_;
};

}  // namespace halvor::kelo::web
