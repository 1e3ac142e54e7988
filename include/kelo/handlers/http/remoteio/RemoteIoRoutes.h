#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of remote I/O under "/1/api/remote-io/": rules, actions, analog outputs and site
// controls.
class RemoteIoRoutes {
 public:
  RemoteIoRoutes() = delete;

  static void registerRemoteIoRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
