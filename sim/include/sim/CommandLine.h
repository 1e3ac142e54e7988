#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace halvor::sim {

class CommandLineError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct CommandLineOptions {
  std::string pluginPath;
  std::string logConfigFile;
  std::string configFile;
  std::string webConfigFile;
  std::vector<std::string> fixtureFiles;
  std::vector<std::pair<std::string, std::string>> sessions;  // identifier, user
  std::optional<int> sessionTimeoutSeconds;
  unsigned pluginId = 1;
  bool demoModels = true;
  bool help = false;
};

// The command line of tavel-sim.
class CommandLine {
 public:
  // CommandLineError with one line for anything that is wrong.
  static CommandLineOptions parse(int argc, const char* const* argv);
  static std::string usage();
};

}  // namespace halvor::sim
