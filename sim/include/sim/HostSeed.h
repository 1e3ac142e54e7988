#pragma once

#include <vector>

#include "sim/Fixture.h"
#include "sim/SimTavel.h"

namespace halvor::sim {

// How a simulated host gets its first state, the same for tavel-sim and for every in-process
// fixture: the models first (with the demo's models off, only those that the fixtures name under
// "models"), then the fixtures in order. Models keep their values in the tree and seed only where
// nothing is stored, so what a fixture seeds is what a client reads first.
class HostSeed {
 public:
  HostSeed() = delete;

  static void seed(SimTavel& host, const std::vector<Fixture>& fixtures, bool demoModels);
};

}  // namespace halvor::sim
