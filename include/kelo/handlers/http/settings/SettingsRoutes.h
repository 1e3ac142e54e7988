#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the settings pages.
class SettingsRoutes {
 public:
  SettingsRoutes() = delete;

  // "/1/api/settingcollections/{name}" GET, "/1/api/settings/collections/links" GET,
  // "/1/api/settings/{guid}" PUT.
  static void registerSettingsRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
