#include <gtest/gtest.h>

#include <filesystem>

#include "kelo/handlers/http/files/UnmanagedUsbMount.h"
#include "kelo/handlers/http/files/UsbMount.h"

namespace halvor::kelo::test {
namespace {

// Mounting a stick cannot be tried here; what the machine's mount table and the mount call say
// about places that are and are not mount points can.

TEST(UsbMountTest, TheMountTableKnowsMountPointsAndNothingElse) {
  UsbMount mount;
  EXPECT_TRUE(mount.usbIsMounted("/proc"));
  EXPECT_TRUE(mount.usbIsMounted("/"));
  EXPECT_FALSE(mount.usbIsMounted("/proc/"));
  EXPECT_FALSE(mount.usbIsMounted("/no/such/stick"));
}

TEST(UsbMountTest, AFolderThatIsNoMountPointCannotBeRemounted) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("kelo-not-a-stick-" + std::to_string(::getpid()));
  std::filesystem::create_directories(folder);
  UsbMount mount;
  EXPECT_FALSE(mount.remountReadWrite(folder.string()));
  EXPECT_FALSE(mount.remountReadOnly(folder.string()));
  EXPECT_FALSE(mount.remountReadWrite("/no/such/stick"));
  std::filesystem::remove_all(folder);
}

TEST(UnmanagedUsbMountTest, AFolderIsAMountedStickAndRemountsHaveNothingToDo) {
  UnmanagedUsbMount mount;
  EXPECT_TRUE(mount.usbIsMounted(std::filesystem::temp_directory_path().string()));
  EXPECT_FALSE(mount.usbIsMounted("/no/such/stick"));
  EXPECT_TRUE(mount.remountReadWrite("/no/such/stick"));
  EXPECT_TRUE(mount.remountReadOnly("/no/such/stick"));
}

}  // namespace
}  // namespace halvor::kelo::test
