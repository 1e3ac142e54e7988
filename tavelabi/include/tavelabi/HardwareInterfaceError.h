#pragma once

namespace halvor::tavelabi {

// Maps a hardware response code of the host to the host's error number; 0 means success.
class HardwareInterfaceError {
 public:
  int mapping(int responseCode);
};

}  // namespace halvor::tavelabi
