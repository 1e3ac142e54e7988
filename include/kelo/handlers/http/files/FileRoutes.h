#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of stored files and USB volumes.
class FileRoutes {
 public:
  FileRoutes() = delete;
  static void registerFileRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
