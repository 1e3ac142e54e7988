#pragma once

namespace halvor::kelo {

// Host resource paths that more than one file of the plug-in names. A path that one handler
// alone uses stays in that handler.
class HostPaths {
 public:
  HostPaths() = delete;

  // The addresses, besides loopback, from which a client counts as local.
  static constexpr const char* kLocalhostIp = "/px3/localhostIp";
  // Which client addresses get pushes: a map from IP address to the seconds left. init creates
  // it empty, the ping endpoint writes 5 for its client's address, the fan-out skips addresses
  // that are not in it, and consume takes 1 off each entry every second.
  static constexpr const char* kConnectivities = "/kelo/websocketConnectivities";
};

}  // namespace halvor::kelo
