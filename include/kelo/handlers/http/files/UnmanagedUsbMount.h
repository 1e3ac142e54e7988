#pragma once

#include <string>

#include "kelo/handlers/http/files/IUsbMount.h"

namespace halvor::kelo {

// For storage under a root prefix (tests, the demo), where the volumes are plain directories:
// a volume is mounted when its directory exists, and a remount has nothing to do.
class UnmanagedUsbMount : public IUsbMount {
 public:
  bool usbIsMounted(const std::string& mountPoint) override;
  bool remountReadWrite(const std::string& mountPoint) override;
  bool remountReadOnly(const std::string& mountPoint) override;
};

}  // namespace halvor::kelo
