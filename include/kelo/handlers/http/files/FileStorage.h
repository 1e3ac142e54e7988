#pragma once

#include <memory>
#include <string>

#include "kelo/handlers/http/files/IUsbMount.h"

namespace halvor::kelo {

// Where uploads are stored, from the plug-in's configuration: "storage-root" is put in front of
// every storage directory (empty on the controller; tests and the demo point it at a folder of
// their own so that nothing is written to the machine's "/data" or "/mnt"), and "usb-remount"
// (true by default) says whether sticks are remounted around a write. Set at init, read by the
// I/O threads.
class FileStorage {
 public:
  FileStorage() = delete;

  static void configure(const std::string& root, bool remount);
  static std::string root();
  static bool remountsSticks();
  // The mount handling that saveFile uses: UsbMount, or UnmanagedUsbMount without remounts.
  static std::unique_ptr<IUsbMount> makeUsbMount();
  // The directory where the certificate listener finds an upload, with the root in front.
  static std::string uploadedCertificatesDirectory();
};

}  // namespace halvor::kelo
