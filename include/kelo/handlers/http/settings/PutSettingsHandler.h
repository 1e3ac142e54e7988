#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/settings/{guid}": writes "set_value" of a QuoSetting body to the setting whose
// guid is the URL's ("a-b-c" is the path "/a/b/c") and answers the host's reply as Resource
// JSON. The host moves the setting's "value" towards it in its own time.
class PutSettingsHandler : public web::HttpController<PutSettingsHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(putSetting, "/api/settings/{guid}", web::Put)
  KELO_ROUTES_END

  virtual void putSetting(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
