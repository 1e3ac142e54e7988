#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

namespace halvor::kelo::web {

// The bytes that request bodies may hold in temporary files, all connections together. Each
// body file takes its bytes through a Lease as it grows and gives them back when the lease
// goes, which is when the file is removed. Safe from any thread.
class DiskBudget : public std::enable_shared_from_this<DiskBudget> {
 public:
  class Lease {
   public:
    explicit Lease(std::shared_ptr<DiskBudget> budget) : budget_(std::move(budget)) {}
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    // Takes `bytes` more; false (and nothing taken) when the budget has not that much left.
    bool grow(std::uint64_t bytes);
    std::uint64_t bytes() const { return bytes_; }

   private:
    std::shared_ptr<DiskBudget> budget_;
    std::uint64_t bytes_ = 0;
  };

  // 0: no limit.
  void configure(std::uint64_t total) { total_ = total; }
  std::shared_ptr<Lease> lease() { return std::make_shared<Lease>(shared_from_this()); }
  std::uint64_t used() const { return used_.load(); }

 private:
  bool take(std::uint64_t bytes);
  void give(std::uint64_t bytes) { used_.fetch_sub(bytes); }

  std::uint64_t total_ = 0;
  std::atomic<std::uint64_t> used_{0};
};

}  // namespace halvor::kelo::web
