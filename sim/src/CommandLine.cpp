#include "sim/CommandLine.h"

#include <charconv>
#include <string_view>

namespace halvor::sim {

namespace {

[[noreturn]] void fail(const std::string& reason) { throw CommandLineError(reason); }

long parseNumber(const std::string& option, const std::string& text, long min, long max) {
  long number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < min || number > max) {
    fail(option + " needs a whole number from " + std::to_string(min) + " to " +
         std::to_string(max) + ", not \"" + text + "\"");
  }
  return number;
}

std::pair<std::string, std::string> parseSession(const std::string& text) {
  std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
    fail("--session needs ID=USER, not \"" + text + "\"");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace

CommandLineOptions CommandLine::parse(int argc, const char* const* argv) {
  CommandLineOptions options;
  for (int i = 1; i < argc; ++i) {
    std::string option = argv[i];
    if (option == "--help" || option == "-h") {
      options.help = true;
      return options;
    }
    if (option == "--no-demo-models") {
      options.demoModels = false;
      continue;
    }
    if (i + 1 >= argc) fail(option == "" ? "empty option" : option + " needs a value");
    std::string value = argv[++i];
    if (option == "--plugin") {
      options.pluginPath = value;
    } else if (option == "--log-config") {
      options.logConfigFile = value;
    } else if (option == "--config") {
      options.configFile = value;
    } else if (option == "--web-config") {
      options.webConfigFile = value;
    } else if (option == "--fixture") {
      options.fixtureFiles.push_back(value);
    } else if (option == "--session") {
      options.sessions.push_back(parseSession(value));
    } else if (option == "--session-timeout") {
      options.sessionTimeoutSeconds =
          static_cast<int>(parseNumber(option, value, 1, 365L * 24 * 3600));
    } else if (option == "--plugin-id") {
      options.pluginId = static_cast<unsigned>(parseNumber(option, value, 0, 4294967295L));
    } else {
      fail("unknown option " + option + " (see --help)");
    }
  }
  if (options.pluginPath.empty()) fail("--plugin PATH is required (see --help)");
  if (options.logConfigFile.empty()) fail("--log-config FILE is required (see --help)");
  if (options.configFile.empty()) fail("--config FILE is required (see --help)");
  return options;
}

std::string CommandLine::usage() {
  return R"(Usage: tavel-sim --plugin PATH --log-config FILE --config FILE [options]

The simulated host: loads a plug-in library, hands it the host interface, calls init and then
produce and consume about 100 times a second until SIGINT or SIGTERM, then shuts it down.

  --plugin PATH            plug-in library to load (dlopen); it must export create, produce
                           and consume
  --log-config FILE        log configuration file, handed to the plug-in's init
  --config FILE            configuration file, handed to the plug-in's init
  --web-config FILE        the web server's configuration file; informational only (printed):
                           the plug-in finds it through its own configuration file
  --fixture FILE           JSON fixture with users, resources, auto-login rules and the session
                           timeout; repeatable, applied in the order given
  --session ID=USER        make a session with identifier ID, logged in as USER; repeatable
  --session-timeout SECS   idle time after which a session expires (default 900; overrides
                           the fixtures)
  --plugin-id N            the identifier handed to init (default 1)
  --no-demo-models         run no model of the transmitter (the demo's /demo/clock and
                           /demo/counter, and every domain's): the tree holds what the
                           fixtures seed and what clients write, nothing else; only the
                           models that a fixture names under "models" run
  --help                   print this text and exit

Exit status: 0 after a clean shutdown on SIGINT or SIGTERM; 2 for a bad command line or
fixture; 3 for a plug-in that cannot be loaded.
)";
}

}  // namespace halvor::sim
