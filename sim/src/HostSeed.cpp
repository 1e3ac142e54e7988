#include "sim/HostSeed.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "sim/models/ModelRegistry.h"

namespace halvor::sim {

namespace {

// The registry's models that the fixtures name, in the registry's order, each once. A name the
// registry does not know is an error that names the fixture.
std::vector<ModelRegistry::Factory> namedModels(const std::vector<Fixture>& fixtures) {
  const std::vector<std::string> known = ModelRegistry::names();
  std::vector<bool> wanted(known.size(), false);
  for (const Fixture& fixture : fixtures) {
    for (const std::string& name : fixture.models) {
      const auto found = std::find(known.begin(), known.end(), name);
      if (found == known.end()) {
        throw std::invalid_argument(fixture.source + ": unknown model \"" + name + "\"");
      }
      wanted[static_cast<std::size_t>(found - known.begin())] = true;
    }
  }
  std::vector<ModelRegistry::Factory> factories;
  for (std::size_t i = 0; i < known.size(); ++i) {
    if (wanted[i]) factories.push_back(ModelRegistry::factories()[i]);
  }
  return factories;
}

}  // namespace

void HostSeed::seed(SimTavel& host, const std::vector<Fixture>& fixtures, bool demoModels) {
  if (demoModels) {
    ModelRegistry::installAll(host);
  } else {
    ModelRegistry::install(host, namedModels(fixtures));
  }
  for (const Fixture& fixture : fixtures) host.applyFixture(fixture);
}

}  // namespace halvor::sim
