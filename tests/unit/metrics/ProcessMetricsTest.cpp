#include <gtest/gtest.h>
#include <prometheus/text_serializer.h>

#include "kelo/metrics/ProcessMetrics.h"

namespace halvor::kelo {
namespace {

TEST(ProcessMetricsTest, CpuSecondsAreUserAndSystemTicksCountedFromTheLastParenthesis) {
  // A command name with a blank and a ")" of its own; utime 250, stime 150.
  const std::string stat =
      "1234 (tavel sim) x) S 1 1234 1234 0 -1 4194560 100 0 0 0 250 150 0 0 20 0 9 0 100 0 0";
  const auto seconds = ProcessMetrics::cpuSecondsFromStat(stat, 100);
  ASSERT_TRUE(seconds.has_value());
  EXPECT_DOUBLE_EQ(*seconds, 4.0);
}

TEST(ProcessMetricsTest, ACutOrUnreadableStatGivesNothing) {
  EXPECT_FALSE(ProcessMetrics::cpuSecondsFromStat("", 100).has_value());
  EXPECT_FALSE(ProcessMetrics::cpuSecondsFromStat("1 (x) S 1 2 3", 100).has_value());
  EXPECT_FALSE(ProcessMetrics::cpuSecondsFromStat("no parenthesis", 100).has_value());
}

TEST(ProcessMetricsTest, ResidentBytesAreTheSecondFieldOfStatmInPages) {
  const auto bytes = ProcessMetrics::residentBytesFromStatm("5000 300 20 10 0 400 0\n", 4096);
  ASSERT_TRUE(bytes.has_value());
  EXPECT_DOUBLE_EQ(*bytes, 300.0 * 4096);
  EXPECT_FALSE(ProcessMetrics::residentBytesFromStatm("5000", 4096).has_value());
}

TEST(ProcessMetricsTest, ThisProcessHasMemoryAndCpuTime) {
  prometheus::Registry registry;
  ProcessMetrics::add(registry);
  double resident = 0;
  bool cpu = false;
  for (const prometheus::MetricFamily& family : registry.Collect()) {
    if (family.name == "process_resident_memory_bytes") resident = family.metric.at(0).gauge.value;
    if (family.name == "process_cpu_seconds_total") cpu = family.metric.at(0).counter.value >= 0;
  }
  EXPECT_GT(resident, 1024 * 1024);
  EXPECT_TRUE(cpu);
}

}  // namespace
}  // namespace halvor::kelo
