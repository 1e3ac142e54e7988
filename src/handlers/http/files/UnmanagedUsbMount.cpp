#include "kelo/handlers/http/files/UnmanagedUsbMount.h"

#include <filesystem>

namespace halvor::kelo {

bool UnmanagedUsbMount::usbIsMounted(const std::string& mountPoint) {
  std::error_code ec;
  return std::filesystem::is_directory(mountPoint, ec);
}

bool UnmanagedUsbMount::remountReadWrite(const std::string& /*mountPoint*/) { return true; }

bool UnmanagedUsbMount::remountReadOnly(const std::string& /*mountPoint*/) { return true; }

}  // namespace halvor::kelo
