#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "kelo/handlers/http/files/UnmanagedUsbMount.h"
#include "kelo/handlers/http/files/UsbMount.h"

namespace halvor::kelo::test {
namespace {

// Mounting a stick cannot be tried here; what the machine's mount table and the mount call say
// about places that are and are not mount points can.

// The mount points the machine's table lists, read here line by line (the second field), those
// with an escaped character left out. The root is not among them in a chroot, so none is taken
// for granted but "/proc", which the table itself comes from.
std::vector<std::string> listedMountPoints() {
  std::ifstream table("/proc/mounts");
  std::vector<std::string> points;
  std::string device, point, rest;
  while (table >> device >> point && std::getline(table, rest)) {
    if (point.find('\\') == std::string::npos) points.push_back(point);
  }
  return points;
}

TEST(UsbMountTest, TheMountTableKnowsMountPointsAndNothingElse) {
  UsbMount mount;
  const std::vector<std::string> points = listedMountPoints();
  ASSERT_NE(std::find(points.begin(), points.end(), "/proc"), points.end());
  for (const std::string& point : points) EXPECT_TRUE(mount.usbIsMounted(point)) << point;
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
