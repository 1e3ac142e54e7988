#include "kelo/metrics/ProcessMetrics.h"

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace halvor::kelo {

namespace {

std::string fileText(const char* path) {
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace

void ProcessMetrics::add(prometheus::Registry& registry) {
  if (const auto bytes =
          residentBytesFromStatm(fileText("/proc/self/statm"), sysconf(_SC_PAGESIZE))) {
    prometheus::BuildGauge()
        .Name("process_resident_memory_bytes")
        .Help("Resident memory of the host's process, in bytes")
        .Register(registry)
        .Add({})
        .Set(*bytes);
  }
  if (const auto seconds = cpuSecondsFromStat(fileText("/proc/self/stat"), sysconf(_SC_CLK_TCK))) {
    prometheus::BuildCounter()
        .Name("process_cpu_seconds_total")
        .Help("User and system CPU time of the host's process, in seconds")
        .Register(registry)
        .Add({})
        .Increment(*seconds);
  }
}

// The second field, the command's name in parentheses, may hold blanks and parentheses itself:
// the fields are counted from the last ")". utime and stime are fields 14 and 15.
std::optional<double> ProcessMetrics::cpuSecondsFromStat(const std::string& stat,
                                                         long ticksPerSecond) {
  const auto end = stat.rfind(')');
  if (end == std::string::npos || ticksPerSecond <= 0) return std::nullopt;
  std::istringstream fields(stat.substr(end + 1));
  std::string field;
  // Fields 3 (state) to 13 come before utime.
  for (int skipped = 3; skipped <= 13; ++skipped) {
    if (!(fields >> field)) return std::nullopt;
  }
  unsigned long long user = 0;
  unsigned long long system = 0;
  if (!(fields >> user >> system)) return std::nullopt;
  return static_cast<double>(user + system) / static_cast<double>(ticksPerSecond);
}

// statm: size resident shared text lib data dt, in pages.
std::optional<double> ProcessMetrics::residentBytesFromStatm(const std::string& statm,
                                                             long pageSize) {
  std::istringstream fields(statm);
  unsigned long long size = 0;
  unsigned long long resident = 0;
  if (pageSize <= 0 || !(fields >> size >> resident)) return std::nullopt;
  return static_cast<double>(resident) * static_cast<double>(pageSize);
}

}  // namespace halvor::kelo
