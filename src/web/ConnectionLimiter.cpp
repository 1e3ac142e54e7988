#include "ConnectionLimiter.h"

#include <sys/resource.h>

#include <algorithm>

namespace halvor::kelo::web {

ConnectionLimiter::Slot& ConnectionLimiter::Slot::operator=(Slot&& other) noexcept {
  if (this != &other) {
    release();
    limiter_ = other.limiter_;
    ip_ = std::move(other.ip_);
    other.limiter_ = nullptr;
  }
  return *this;
}

void ConnectionLimiter::Slot::release() {
  if (limiter_ != nullptr) limiter_->release(ip_);
  limiter_ = nullptr;
}

void ConnectionLimiter::configure(std::size_t maxTotal, std::size_t maxPerIp) {
  maxTotal_ = maxTotal;
  maxPerIp_ = maxPerIp;
}

std::size_t ConnectionLimiter::descriptorRoom(std::size_t descriptorLimit) {
  // A quarter, at least 32, stays free: a connection that was accepted must still be able to
  // open a file, and the host shares the process.
  std::size_t reserve = std::max<std::size_t>(32, descriptorLimit / 4);
  return descriptorLimit > reserve ? descriptorLimit - reserve : 1;
}

std::size_t ConnectionLimiter::effectiveMaximum(std::size_t configured) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
    return configured;
  }
  std::size_t room = descriptorRoom(static_cast<std::size_t>(limit.rlim_cur));
  return configured == 0 ? room : std::min(configured, room);
}

bool ConnectionLimiter::tryAdmit(const std::string& ip, Slot& slot) {
  std::size_t before = total_.fetch_add(1, std::memory_order_relaxed);
  if (maxTotal_ != 0 && before >= maxTotal_) {
    total_.fetch_sub(1, std::memory_order_relaxed);
    return false;
  }
  if (maxPerIp_ != 0) {
    std::lock_guard lock(mutex_);
    std::size_t& count = perIp_[ip];
    if (count >= maxPerIp_) {
      if (count == 0) perIp_.erase(ip);
      total_.fetch_sub(1, std::memory_order_relaxed);
      return false;
    }
    ++count;
  }
  slot = Slot(this, ip);
  return true;
}

void ConnectionLimiter::release(const std::string& ip) {
  if (maxPerIp_ != 0) {
    std::lock_guard lock(mutex_);
    auto it = perIp_.find(ip);
    if (it != perIp_.end() && --it->second == 0) perIp_.erase(it);
  }
  total_.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace halvor::kelo::web
