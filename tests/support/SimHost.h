#pragma once

#include "sim/HostSeed.h"
#include "sim/SimTavel.h"

namespace halvor::kelo::test {

// The simulated host with an administrator and a read-only user, each logged in under a known
// session identifier.
class SimHost {
 public:
  static constexpr const char* kAdminSession = "admin-session";
  static constexpr const char* kViewerSession = "viewer-session";

  SimHost() : tavel(quietOptions()) {
    sim::HostSeed::seed(tavel, {}, true);
    tavel.addUser({"admin", "admin-pw", "administrator", {}});
    tavel.addUser({"viewer", "viewer-pw", "read-only", {}});
    tavel.openSession("admin", kAdminSession);
    tavel.openSession("viewer", kViewerSession);
  }

  sim::SimTavel tavel;

 private:
  static sim::SimTavelOptions quietOptions() {
    sim::SimTavelOptions options;
    options.echoToConsole = false;
    return options;
  }
};

}  // namespace halvor::kelo::test
