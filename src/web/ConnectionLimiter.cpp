#include "ConnectionLimiter.h"

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
