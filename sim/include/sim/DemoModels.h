#pragma once

#include <cstdint>

#include "tavelabi/Types.h"

namespace halvor::sim {

class SimTavel;

// Resources that change on their own, so that a subscribed client sees pushes at once:
// "/demo/clock" (the UTC time as text) and "/demo/counter" (an INT32 that counts up), each
// updated once a second from the host's loop.
class DemoModels {
 public:
  static constexpr const char* kClockPath = "/demo/clock";
  static constexpr const char* kCounterPath = "/demo/counter";

  explicit DemoModels(SimTavel& host);

  // Called on every pass of the host's loop; creates the resources on the first call and
  // updates them when a second has passed since the last update.
  void tick(const tavelabi::TimePoint& now);

 private:
  SimTavel& host_;
  bool created_ = false;
  tavelabi::TimePoint lastUpdate_{};
  std::int32_t counter_ = 0;
};

}  // namespace halvor::sim
