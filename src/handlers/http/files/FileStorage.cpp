#include "kelo/handlers/http/files/FileStorage.h"

#include <mutex>

#include "kelo/handlers/http/files/UnmanagedUsbMount.h"
#include "kelo/handlers/http/files/UsbMount.h"

namespace halvor::kelo {
namespace {

struct Settings {
  std::mutex mutex;
  std::string root;
  bool remount = true;
};

Settings& settings() {
  static Settings shared;
  return shared;
}

}  // namespace

void FileStorage::configure(const std::string& root, bool remount) {
  std::lock_guard<std::mutex> lock(settings().mutex);
  settings().root = root;
  settings().remount = remount;
}

std::string FileStorage::root() {
  std::lock_guard<std::mutex> lock(settings().mutex);
  return settings().root;
}

bool FileStorage::remountsSticks() {
  std::lock_guard<std::mutex> lock(settings().mutex);
  return settings().remount;
}

std::unique_ptr<IUsbMount> FileStorage::makeUsbMount() {
  if (remountsSticks()) return std::make_unique<UsbMount>();
  return std::make_unique<UnmanagedUsbMount>();
}

std::string FileStorage::uploadedCertificatesDirectory() {
  return root() + "/data/halvor/files/certificates/uploaded";
}

}  // namespace halvor::kelo
