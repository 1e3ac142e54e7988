#pragma once

namespace halvor::tavelabi {

// Maps a hardware response code of the host to the host's error number; 0 means success.
// The hardware answers 0 when it accepted a change, and 0 maps to 0. Every other code is an
// error and is returned unchanged, so that the caller can log the hardware's own number.
class HardwareInterfaceError {
 public:
  int mapping(int responseCode);
};

}  // namespace halvor::tavelabi
