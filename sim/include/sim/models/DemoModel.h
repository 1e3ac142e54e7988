#pragma once

#include "sim/models/Model.h"

namespace halvor::sim {

// Resources that change on their own, so that a subscribed client sees pushes at once:
// "/demo/clock" (the UTC time as text) and "/demo/counter" (an INT32 that counts up from what
// is stored), each updated once a second from the host's loop.
class DemoModel : public Model {
 public:
  static constexpr const char* kClockPath = "/demo/clock";
  static constexpr const char* kCounterPath = "/demo/counter";

  std::string name() const override { return "demo"; }
  // Clock and counter (0), where a fixture has not put them already.
  void seed() override;
  // The first call starts the second; each later call a second or more after the last update
  // updates both.
  void tick(const tavelabi::TimePoint& now) override;

 private:
  void write(const char* path, const tavelabi::ResourceValue& value);
  int nextCount() const;

  bool started_ = false;
  tavelabi::TimePoint lastUpdate_{};
};

}  // namespace halvor::sim
