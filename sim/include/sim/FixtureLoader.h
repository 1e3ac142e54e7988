#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "sim/Fixture.h"

namespace halvor::sim {

// A fixture that cannot be used; what() is "<file>: <reason>".
class FixtureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads fixture files (JSON, format in docs/SIMULATOR.md).
class FixtureLoader {
 public:
  // Besides its own keys, a fixture may hold the sections that models read
  // (ModelRegistry::fixtureSections(), or those given); any other key is an error.
  static Fixture loadFile(const std::string& path);
  static Fixture loadFile(const std::string& path, const std::vector<std::string>& modelSections);
  // Parses fixture text; `source` names it in errors.
  static Fixture parse(const std::string& text, const std::string& source);
  static Fixture parse(const std::string& text, const std::string& source,
                       const std::vector<std::string>& modelSections);
};

}  // namespace halvor::sim
