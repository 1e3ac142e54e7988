#pragma once

#include <string>

namespace halvor::sim {

// The simulator's console: whole lines, never interleaved between threads, flushed at once so
// that a parent process reading a pipe sees them as they happen.
class Console {
 public:
  static void line(const std::string& text);
  static void errorLine(const std::string& text);
};

}  // namespace halvor::sim
