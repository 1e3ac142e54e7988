// bench-users-hash [COUNT]: the CPU time of one check of a password by the simulated host
// (PasswordHash::verify, which every login makes once), the median of COUNT (default 50) timed
// checks, and of one new hash (PasswordHash::make, for new users and password changes).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "sim/PasswordHash.h"

namespace {

double cpuMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

template <class Work>
double medianMicroseconds(int count, Work&& work) {
  std::vector<double> times;
  for (int i = 0; i < count; ++i) {
    const double start = cpuMicroseconds();
    work();
    times.push_back(cpuMicroseconds() - start);
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::max(1, std::atoi(argv[1])) : 50;
  const std::string stored = halvor::sim::PasswordHash::make("bench-password");
  bool allRight = true;
  const double verify = medianMicroseconds(count, [&] {
    allRight = halvor::sim::PasswordHash::verify("bench-password", stored) && allRight;
  });
  const double make =
      medianMicroseconds(count, [] { (void)halvor::sim::PasswordHash::make("bench-password"); });
  if (!allRight) {
    std::fprintf(stderr, "bench-users-hash: a check of the right password failed\n");
    return 1;
  }
  std::printf("password check (PBKDF2-HMAC-SHA-256, %d iterations): %.0f us CPU, median of %d\n",
              halvor::sim::PasswordHash::kIterations, verify, count);
  std::printf("new password hash: %.0f us CPU, median of %d\n", make, count);
  return 0;
}
