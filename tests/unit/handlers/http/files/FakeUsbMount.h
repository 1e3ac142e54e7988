#pragma once

#include <string>
#include <vector>

#include "kelo/handlers/http/files/IUsbMount.h"

namespace halvor::kelo::test {

// Records each remount, in order, as "rw <dir>" or "ro <dir>"; a read/write remount fails when
// the test says so.
class FakeUsbMount : public IUsbMount {
 public:
  bool usbIsMounted(const std::string& mountPoint) override {
    calls.push_back("mounted? " + mountPoint);
    return true;
  }
  bool remountReadWrite(const std::string& mountPoint) override {
    calls.push_back("rw " + mountPoint);
    return !failReadWrite;
  }
  bool remountReadOnly(const std::string& mountPoint) override {
    calls.push_back("ro " + mountPoint);
    return true;
  }

  bool failReadWrite = false;
  std::vector<std::string> calls;
};

}  // namespace halvor::kelo::test
