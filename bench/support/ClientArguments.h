#pragma once

#include <functional>
#include <map>
#include <string>

#include "SubscriberSwarm.h"

namespace halvor::bench {

// The command line of a fan-out benchmark client: "--port P --clients N [--session S]
// [--quiet-seconds Q]" that every client takes, plus the options of the benchmark itself, each
// handed to its own setter. Unknown options are ignored.
struct ClientArguments {
  using Setter = std::function<void(const std::string& value)>;

  SwarmOptions swarm;  // port and session; the benchmark sets the target and clients
  int clients = 0;
  int quietSeconds = 4;

  // The session defaults to "bench-session". False when the port or the client count is missing.
  static bool parse(int argc, char** argv, const std::map<std::string, Setter>& extra,
                    ClientArguments& arguments);
};

}  // namespace halvor::bench
