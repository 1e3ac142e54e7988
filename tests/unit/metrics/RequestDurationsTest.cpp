#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "kelo/metrics/RequestDurations.h"

namespace halvor::kelo {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

TEST(RequestDurationsTest, CountsEachObservationInTheFirstBucketWhoseBoundHoldsIt) {
  RequestDurations durations("d_seconds", "help");
  RequestDurations::Series& series = durations.seriesOf("/a");
  RequestDurations::observe(series, microseconds(100));         // <= 0.0005
  RequestDurations::observe(series, microseconds(500));         // == 0.0005, still the first
  RequestDurations::observe(series, milliseconds(3));           // <= 0.005
  RequestDurations::observe(series, std::chrono::seconds(11));  // above every bound
  const prometheus::MetricFamily family = durations.collect();
  ASSERT_EQ(family.metric.size(), 1u);
  const auto& histogram = family.metric[0].histogram;
  ASSERT_EQ(histogram.bucket.size(), RequestDurations::kBounds.size() + 1);
  EXPECT_EQ(histogram.bucket[0].cumulative_count, 2u);
  EXPECT_EQ(histogram.bucket[2].cumulative_count, 2u);   // 0.0025
  EXPECT_EQ(histogram.bucket[3].cumulative_count, 3u);   // 0.005
  EXPECT_EQ(histogram.bucket[13].cumulative_count, 3u);  // 10
  EXPECT_TRUE(std::isinf(histogram.bucket[14].upper_bound));
  EXPECT_EQ(histogram.bucket[14].cumulative_count, 4u);
  EXPECT_EQ(histogram.sample_count, 4u);
  EXPECT_DOUBLE_EQ(histogram.sample_sum, 0.0001 + 0.0005 + 0.003 + 11);
}

TEST(RequestDurationsTest, KeepsOneSeriesPerRouteLabelledRoute) {
  RequestDurations durations("d_seconds", "help");
  RequestDurations::Series& first = durations.seriesOf("/a");
  EXPECT_EQ(&durations.seriesOf("/a"), &first);
  RequestDurations::observe(durations.seriesOf("/b"), milliseconds(1));
  const prometheus::MetricFamily family = durations.collect();
  EXPECT_EQ(family.name, "d_seconds");
  EXPECT_EQ(family.type, prometheus::MetricType::Histogram);
  ASSERT_EQ(family.metric.size(), 2u);
  EXPECT_EQ(family.metric[0].label.at(0).name, "route");
  EXPECT_EQ(family.metric[0].label.at(0).value, "/a");
  EXPECT_EQ(family.metric[0].histogram.sample_count, 0u);
  EXPECT_EQ(family.metric[1].label.at(0).value, "/b");
  EXPECT_EQ(family.metric[1].histogram.sample_count, 1u);
}

TEST(RequestDurationsTest, ANegativeDurationCountsInTheFirstBucketAndAddsNothingToTheSum) {
  RequestDurations durations("d_seconds", "help");
  RequestDurations::observe(durations.seriesOf("/a"), std::chrono::nanoseconds(-5));
  const prometheus::MetricFamily family = durations.collect();
  const auto& histogram = family.metric.at(0).histogram;
  EXPECT_EQ(histogram.bucket[0].cumulative_count, 1u);
  EXPECT_EQ(histogram.sample_sum, 0.0);
}

}  // namespace
}  // namespace halvor::kelo
