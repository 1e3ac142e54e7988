#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sim/models/Model.h"

namespace halvor::sim {

// Every model of the simulated transmitter, in one table (sim/src/models/ModelRegistry.cpp):
// a new domain adds its line there. tavel-sim, the benchmarks and the in-process test fixtures
// install them with the one call installAll(host).
class ModelRegistry {
 public:
  using Factory = std::unique_ptr<Model> (*)();

  // The factories, in installation order.
  static const std::vector<Factory>& factories();
  // A fresh instance of every model, installed into the host (SimTavel::installModel).
  // DuplicateCommandError when two models, or a model and the host, serve the same command.
  static void installAll(SimTavel& host);
  // Installs the given factories only: for tests of models that are not in the table.
  static void install(SimTavel& host, const std::vector<Factory>& factories);
  // The fixture keys that models read; FixtureLoader accepts these besides its own.
  static std::vector<std::string> fixtureSections();
  static std::vector<std::string> names();
};

}  // namespace halvor::sim
