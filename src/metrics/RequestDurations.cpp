#include "kelo/metrics/RequestDurations.h"

#include <algorithm>
#include <limits>

namespace halvor::kelo {

RequestDurations::RequestDurations(std::string name, std::string help)
    : name_(std::move(name)), help_(std::move(help)) {}

RequestDurations::Series& RequestDurations::seriesOf(const std::string& route) {
  std::lock_guard lock(mutex_);
  for (Series& series : series_) {
    if (series.route == route) return series;
  }
  return series_.emplace_back(route);
}

void RequestDurations::observe(Series& series, std::chrono::nanoseconds elapsed) {
  const double seconds = std::chrono::duration<double>(elapsed).count();
  const auto bucket = static_cast<std::size_t>(
      std::lower_bound(kBounds.begin(), kBounds.end(), seconds) - kBounds.begin());
  series.counts[bucket].fetch_add(1, std::memory_order_relaxed);
  const auto nanoseconds = std::max<std::int64_t>(elapsed.count(), 0);
  series.sumNanoseconds.fetch_add(static_cast<std::uint64_t>(nanoseconds),
                                  std::memory_order_relaxed);
}

prometheus::MetricFamily RequestDurations::collect() const {
  prometheus::MetricFamily family;
  family.name = name_;
  family.help = help_;
  family.type = prometheus::MetricType::Histogram;
  std::lock_guard lock(mutex_);
  for (const Series& series : series_) {
    prometheus::ClientMetric metric;
    metric.label.push_back({"route", series.route});
    std::uint64_t cumulative = 0;
    for (std::size_t i = 0; i < series.counts.size(); ++i) {
      cumulative += series.counts[i].load(std::memory_order_relaxed);
      prometheus::ClientMetric::Bucket bucket;
      bucket.cumulative_count = cumulative;
      bucket.upper_bound =
          i < kBounds.size() ? kBounds[i] : std::numeric_limits<double>::infinity();
      metric.histogram.bucket.push_back(bucket);
    }
    metric.histogram.sample_count = cumulative;
    metric.histogram.sample_sum =
        static_cast<double>(series.sumNanoseconds.load(std::memory_order_relaxed)) / 1e9;
    family.metric.push_back(std::move(metric));
  }
  return family;
}

}  // namespace halvor::kelo
