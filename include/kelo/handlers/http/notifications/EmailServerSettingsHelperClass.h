#pragma once

#include <string>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The mail server through which the host sends notifications.
class EmailServerSettingsHelperClass {
 public:
  EmailServerSettingsHelperClass() = delete;

  static constexpr const char* kPath = "/settings/emailServer";
  static constexpr const char* kCommand = "/settings/command/email";

  // "/settings/emailServer" read and printed as EmailServerSettings JSON.
  static std::string getEmailServerSettingsData(const web::HttpRequestPtr& req,
                                                tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                const std::string& sessionId);
};

}  // namespace halvor::kelo
