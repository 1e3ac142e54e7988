#include "sim/HostSeed.h"

#include "sim/models/ModelRegistry.h"

namespace halvor::sim {

void HostSeed::seed(SimTavel& host, const std::vector<Fixture>& fixtures, bool demoModels) {
  if (demoModels) ModelRegistry::installAll(host);
  for (const Fixture& fixture : fixtures) host.applyFixture(fixture);
}

}  // namespace halvor::sim
