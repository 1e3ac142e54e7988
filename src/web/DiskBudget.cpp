#include "DiskBudget.h"

namespace halvor::kelo::web {

DiskBudget::Lease::~Lease() {
  if (bytes_ != 0) budget_->give(bytes_);
}

bool DiskBudget::Lease::grow(std::uint64_t bytes) {
  if (!budget_->take(bytes)) return false;
  bytes_ += bytes;
  return true;
}

// Compare and swap, so that two connections that grow at once never pass the total together.
bool DiskBudget::take(std::uint64_t bytes) {
  std::uint64_t before = used_.load();
  do {
    if (total_ != 0 && (bytes > total_ || before > total_ - bytes)) return false;
  } while (!used_.compare_exchange_weak(before, before + bytes));
  return true;
}

}  // namespace halvor::kelo::web
