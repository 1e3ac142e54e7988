#pragma once

#include <stdexcept>
#include <string>

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
  static Fixture loadFile(const std::string& path);
  // Parses fixture text; `source` names it in errors.
  static Fixture parse(const std::string& text, const std::string& source);
};

}  // namespace halvor::sim
