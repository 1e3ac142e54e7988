#include "kelo/handlers/http/files/UsbMount.h"

#include <mntent.h>
#include <sys/mount.h>

namespace halvor::kelo {
namespace {

// The mount call's old magic in the high half of the flags, with MS_REMOUNT, and with MS_RDONLY.
constexpr unsigned long kRemountReadWrite = 0xC0ED0020UL;
constexpr unsigned long kRemountReadOnly = 0xC0ED0021UL;
// A remount takes no device; the source is a fixed word.
constexpr const char* kNoDevice = "placeholder";

bool remount(const std::string& mountPoint, unsigned long flags) {
  return ::mount(kNoDevice, mountPoint.c_str(), "", flags, "") == 0;
}

}  // namespace

bool UsbMount::usbIsMounted(const std::string& mountPoint) {
  FILE* table = ::setmntent("/proc/mounts", "r");
  if (table == nullptr) return false;
  struct mntent entry {};
  char buffer[1024];
  bool mounted = false;
  while (::getmntent_r(table, &entry, buffer, sizeof buffer) != nullptr) {
    if (mountPoint == entry.mnt_dir) mounted = true;
  }
  ::endmntent(table);
  return mounted;
}

bool UsbMount::remountReadWrite(const std::string& mountPoint) {
  return remount(mountPoint, kRemountReadWrite);
}

bool UsbMount::remountReadOnly(const std::string& mountPoint) {
  return remount(mountPoint, kRemountReadOnly);
}

}  // namespace halvor::kelo
