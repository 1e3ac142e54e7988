#include "tavelabi/HardwareInterfaceError.h"

namespace halvor::tavelabi {

int HardwareInterfaceError::mapping(int responseCode) {
  // The hardware answers 0 when it took the change; every other code is an error number of its
  // own, kept as it is so that the caller can log it.
  constexpr int kHardwareAccepted = 0;
  constexpr int kSuccess = 0;
  return responseCode == kHardwareAccepted ? kSuccess : responseCode;
}

}  // namespace halvor::tavelabi
