#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the versions, the remote service and the remote support: "/1/api/versions" and
// its three depths, "/1/api/skyrun_versions", "/1/api/lodestar" and
// "/1/api/qcore/skyRunRemoteSupport".
class VersionRoutes {
 public:
  VersionRoutes() = delete;

  static void registerVersionRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
