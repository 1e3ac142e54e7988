#include "kelo/handlers/http/notifications/EmailServerSettingsHelperClass.h"

#include "halvor/factories/NotificationFactories.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

std::string EmailServerSettingsHelperClass::getEmailServerSettingsData(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId) {
  tavelabi::Resource stored = HostReads::read(req, tavel, info, sessionId, kPath);
  protobuf::HalvorPbFactory2EmailServerSettings factory;
  return JsonOptions::toJson(*factory.build(&stored));
}

}  // namespace halvor::kelo
