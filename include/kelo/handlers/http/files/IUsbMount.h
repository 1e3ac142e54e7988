#pragma once

#include <string>

namespace halvor::kelo {

// Mount state of a USB stick. Sticks stay read-only except while a file is written to them.
class IUsbMount {
 public:
  virtual ~IUsbMount() = default;
  virtual bool usbIsMounted(const std::string& mountPoint) = 0;
  virtual bool remountReadWrite(const std::string& mountPoint) = 0;
  virtual bool remountReadOnly(const std::string& mountPoint) = 0;
};

}  // namespace halvor::kelo
