#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/email_server_settings": the mail server of "/settings/emailServer" as
// EmailServerSettings.
class GetEmailServerSettingsHandler
    : public web::KeloHttpController<GetEmailServerSettingsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/email_server_settings", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
