#include "kelo/handlers/http/notifications/PutEmailServerSettingsHandler.h"

#include "kelo/handlers/http/notifications/EmailServerSettingsHelperClass.h"
#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutEmailServerSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                       web::HttpResponsePtr& resp,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* info,
                                                       std::string sessionId) {
  const auto body = RequestBodies::message<protobuf::EmailServerSettings>(req);
  tavelabi::Resource settings;
  if (body.has_authentication()) settings.values["authentication"] = body.authentication().value();
  if (body.has_username()) settings.values["username"] = body.username().value();
  if (body.has_password()) settings.values["password"] = body.password().value();
  if (body.has_transmittername())
    settings.values["transmitterName"] = body.transmittername().value();
  if (body.has_port()) settings.values["port"] = body.port().value();
  if (body.has_host()) settings.values["host"] = body.host().value();
  if (body.has_senderemail()) settings.values["senderEmail"] = body.senderemail().value();
  KeloResourceAction command(tavelabi::CCRUD::Command, EmailServerSettingsHelperClass::kCommand,
                             settings, info, sessionId, req);
  (void)tavel->processResourceAction(command);
  JsonReplies::replyJson(resp, EmailServerSettingsHelperClass::getEmailServerSettingsData(
                                   req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
