#pragma once

#include <prometheus/registry.h>

#include <optional>
#include <string>

namespace halvor::kelo {

// The process's resident memory and CPU time, read from /proc at each scrape. The plug-in lives
// in its host's process: these are the host's figures, the plug-in's share included.
class ProcessMetrics {
 public:
  ProcessMetrics() = delete;

  // "process_resident_memory_bytes" and "process_cpu_seconds_total"; a figure that cannot be
  // read is left out.
  static void add(prometheus::Registry& registry);

  // User plus system time in seconds from the text of /proc/<pid>/stat.
  static std::optional<double> cpuSecondsFromStat(const std::string& stat, long ticksPerSecond);
  // Resident bytes from the text of /proc/<pid>/statm.
  static std::optional<double> residentBytesFromStatm(const std::string& statm, long pageSize);
};

}  // namespace halvor::kelo
