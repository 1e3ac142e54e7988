#pragma once

namespace halvor::kelo {

// The host resource that says which client addresses get pushes: a map from IP address to the
// seconds left. init creates it empty, the ping endpoint writes 5 for its client's address, the
// fan-out skips addresses that are not in it, and consume takes 1 off each entry every second.
class ConnectivityTable {
 public:
  ConnectivityTable() = delete;

  static constexpr const char* kPath = "/kelo/websocketConnectivities";
};

}  // namespace halvor::kelo
