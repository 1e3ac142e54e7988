#include "kelo/handlers/http/time/TimeSettingsHelper.h"

#include <cstdio>

#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::DateAndTime> TimeSettingsHelper::generateDateAndTimeMessage(
    tavelabi::ITavel* /*tavel*/, tavelabi::IPluginInfo* /*info*/, std::string /*sessionId*/) {
  auto message = std::make_shared<protobuf::DateAndTime>();
  message->mutable_dateandtime()->set_seconds(static_cast<int64_t>(std::time(nullptr)));
  return message;
}

std::shared_ptr<protobuf::Timezone> TimeSettingsHelper::generateTimezoneMessage(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    std::string sessionId) {
  auto message = std::make_shared<protobuf::Timezone>();
  message->mutable_timezone()->set_value(
      HostReads::read(req, tavel, info, sessionId, "/time/timezone")
          .values.at("value")
          .getStringValue());
  return message;
}

std::shared_ptr<protobuf::NTPSettings> TimeSettingsHelper::generateNtpSettingsMessage(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    std::string sessionId) {
  const bool enabled =
      HostReads::read(req, tavel, info, sessionId, "/time/ntp").values.at("value").getBoolValue();
  const std::string server = HostReads::read(req, tavel, info, sessionId, "/time/ntpServer")
                                 .values.at("value")
                                 .getStringValue();
  const bool synchronized = HostReads::read(req, tavel, info, sessionId, "/time/ntpSynchronized")
                                .values.at("value")
                                .getBoolValue();
  auto message = std::make_shared<protobuf::NTPSettings>();
  message->mutable_ntpenabled()->set_value(enabled);
  message->mutable_ntpserver()->set_value(server);
  message->mutable_ntpsynchronized()->set_value(synchronized);
  return message;
}

std::shared_ptr<protobuf::TimeSettings> TimeSettingsHelper::generateTimeSettingsMessage(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    std::string sessionId) {
  auto message = std::make_shared<protobuf::TimeSettings>();
  *message->mutable_ntpsettings() = *generateNtpSettingsMessage(req, tavel, info, sessionId);
  *message->mutable_timezone() = *generateTimezoneMessage(req, tavel, info, sessionId);
  *message->mutable_dateandtime() = *generateDateAndTimeMessage(tavel, info, sessionId);
  return message;
}

std::string TimeSettingsHelper::localTimeText(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  char text[96];
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d", local.tm_year + 1900, local.tm_mon + 1,
                local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  return text;
}

bool TimeSettingsHelper::writeSetValue(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                       const std::string& sessionId, const std::string& path,
                                       const tavelabi::ResourceValue& value) {
  KeloResourceAction write(tavelabi::CCRUD::Update, path, tavelabi::Resource("set_value", value),
                           info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(write);
  const auto refusal = answer.values.find("errorMessage");
  if (refusal == answer.values.end()) return true;
  resp->setStatusCode(web::k500InternalServerError);
  resp->setBody(refusal->second.getStringValue());
  return false;
}

}  // namespace halvor::kelo
