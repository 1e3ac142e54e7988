#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/settings/collections/links": the settings pages offered for navigation, those of
// the host's "/collection/**/*" whose "includeAsDynamicSetting" is true, in the host's order.
class GetCollectionLinkSettingsHandler
    : public web::KeloHttpController<GetCollectionLinkSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/settings/collections/links", web::Get)

  static constexpr const char* kListCommand = "/resource/list";
  static constexpr const char* kCollectionPattern = "/collection/**/*";

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
