#pragma once

namespace halvor::kelo {

// Host resource paths that more than one file of the plug-in names. A path that one handler
// alone uses stays in that handler.
class HostPaths {
 public:
  HostPaths() = delete;

  // The addresses, besides loopback, from which a client counts as local.
  static constexpr const char* kLocalhostIp = "/px3/localhostIp";
};

}  // namespace halvor::kelo
