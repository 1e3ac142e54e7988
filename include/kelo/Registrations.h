#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The one place where the plug-in's web plug-in types and routes are made known to the web
// layer, family by family.
class Registrations {
 public:
  // "WebKeloInterface", "ResourceListenerManager", "BackgroundTaskQueue".
  static void registerPluginTypes(web::HttpAppFramework& application);
  static void registerRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
