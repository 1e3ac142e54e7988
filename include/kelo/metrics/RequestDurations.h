#pragma once

#include <prometheus/metric_family.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace halvor::kelo {

// How long requests took, one histogram per route. An observation is a few relaxed atomic
// additions and takes no lock, unlike the library's own histogram, whose Observe locks a mutex:
// I/O threads answering requests of the same route never wait for each other or for a scrape.
class RequestDurations {
 public:
  // The upper bounds of the buckets in seconds; +Inf comes after the last.
  static constexpr std::array<double, 14> kBounds = {
      0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 5, 10};

  // The counts of one route; lives as long as the RequestDurations that made it.
  struct Series {
    explicit Series(std::string route) : route(std::move(route)) {}
    const std::string route;
    // Not cumulative: counts[i] is the observations in (kBounds[i-1], kBounds[i]], the last one
    // those above every bound.
    std::array<std::atomic<std::uint64_t>, kBounds.size() + 1> counts{};
    std::atomic<std::uint64_t> sumNanoseconds{0};
  };

  RequestDurations(std::string name, std::string help);

  // The series of `route`, made on first use (under a lock: callers keep the reference).
  Series& seriesOf(const std::string& route);
  static void observe(Series& series, std::chrono::nanoseconds elapsed);
  // The histogram family with one metric per route, labelled "route". The count of each is the
  // sum of its buckets as read, so that the +Inf bucket and the count always agree.
  prometheus::MetricFamily collect() const;

 private:
  const std::string name_;
  const std::string help_;
  mutable std::mutex mutex_;
  std::deque<Series> series_;  // a deque: references stay valid as it grows
};

}  // namespace halvor::kelo
