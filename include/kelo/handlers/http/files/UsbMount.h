#pragma once

#include <string>

#include "kelo/handlers/http/files/IUsbMount.h"

namespace halvor::kelo {

// The machine's own mounts: the mount table in "/proc/mounts", remounts with the mount system
// call (which needs the right to mount).
class UsbMount : public IUsbMount {
 public:
  bool usbIsMounted(const std::string& mountPoint) override;
  bool remountReadWrite(const std::string& mountPoint) override;
  bool remountReadOnly(const std::string& mountPoint) override;
};

}  // namespace halvor::kelo
