#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the network settings: "/1/api/network_settings" and "/1/api/qcore_settings",
// each GET and PUT.
class NetworkRoutes {
 public:
  NetworkRoutes() = delete;

  static void registerNetworkRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
