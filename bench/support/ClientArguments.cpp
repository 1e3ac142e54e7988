#include "ClientArguments.h"

#include <cstdlib>

namespace halvor::bench {

bool ClientArguments::parse(int argc, char** argv, const std::map<std::string, Setter>& extra,
                            ClientArguments& arguments) {
  arguments.swarm.session = "bench-session";
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    const std::string value = argv[i + 1];
    if (option == "--port") {
      arguments.swarm.port = std::atoi(value.c_str());
    } else if (option == "--clients") {
      arguments.clients = std::atoi(value.c_str());
    } else if (option == "--session") {
      arguments.swarm.session = value;
    } else if (option == "--quiet-seconds") {
      arguments.quietSeconds = std::atoi(value.c_str());
    } else if (const auto found = extra.find(option); found != extra.end()) {
      found->second(value);
    }
  }
  if (arguments.swarm.port == 0 || arguments.clients <= 0) return false;
  arguments.swarm.clients = static_cast<std::size_t>(arguments.clients);
  return true;
}

}  // namespace halvor::bench
