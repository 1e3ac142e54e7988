#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/settingcollections/{name}": the settings page "/collection/<name>" as a
// QuoSettingCollection, every setting read afresh.
class GetSettingsCollectionHandler
    : public web::HttpController<GetSettingsCollectionHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getSetting, "/api/settingcollections/{name}", web::Get)
  KELO_ROUTES_END

  virtual void getSetting(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, std::string name);
};

}  // namespace halvor::kelo
