#pragma once

#include <ctime>
#include <memory>
#include <string>

#include "halvor/protobuf/Time.pb.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The controller's clock, time zone and NTP client under the host's "/time". A write goes as
// "set_value"; the host refuses one by an "errorMessage" in its answer, not by an exception.
class TimeSettingsHelper {
 public:
  TimeSettingsHelper() = delete;

  // The process's clock in whole seconds; the host is not asked.
  static std::shared_ptr<protobuf::DateAndTime> generateDateAndTimeMessage(
      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info, std::string sessionId);
  static std::shared_ptr<protobuf::Timezone> generateTimezoneMessage(const web::HttpRequestPtr& req,
                                                                     tavelabi::ITavel* tavel,
                                                                     tavelabi::IPluginInfo* info,
                                                                     std::string sessionId);
  static std::shared_ptr<protobuf::NTPSettings> generateNtpSettingsMessage(
      const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
      std::string sessionId);
  static std::shared_ptr<protobuf::TimeSettings> generateTimeSettingsMessage(
      const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
      std::string sessionId);

  // "year-month-day hour:minute:second" of the time in the process's zone, each number with "%d"
  // (no leading zeros): 2026-03-07 09:05:01 is "2026-3-7 9:5:1".
  static std::string localTimeText(std::time_t time);

  // Update of `path` with "set_value" = value. When the answer holds "errorMessage", the
  // response gets status 500 and that text as body, and the result is false.
  static bool writeSetValue(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            const std::string& sessionId, const std::string& path,
                            const tavelabi::ResourceValue& value);
};

}  // namespace halvor::kelo
