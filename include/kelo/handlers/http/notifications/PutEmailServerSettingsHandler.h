#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/email_server_settings": the fields of an EmailServerSettings body that are set go to
// "/settings/command/email"; the answer is the settings read back.
class PutEmailServerSettingsHandler
    : public web::KeloHttpController<PutEmailServerSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/email_server_settings", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
