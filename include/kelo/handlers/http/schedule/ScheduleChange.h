#pragma once

#include <string>

#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// The steps that adding, changing and deleting a rule share.
class ScheduleChange {
 public:
  ScheduleChange() = delete;

  // std::stoi of a rule id, leaving errno as it was: std::invalid_argument or std::out_of_range
  // "stoi" for a text that is no int.
  static int ruleNumber(const std::string& ruleId);

  // The change as a Command on `path` with "value", on the request's own thread.
  static void send(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                   tavelabi::IPluginInfo* info, const std::string& sessionId,
                   const std::string& path, const tavelabi::ResourceValue& value);

  // Once the host has taken the change: the wait for the hardware's confirmation on the
  // background queue, answered through the callback (ScheduleHelperClass::
  // getHardwareResponseStatus decides the status; a failure is 440, 403 or 500).
  static void confirmInBackground(BackgroundConfirmation::Reply reply, tavelabi::ITavel* tavel,
                                  tavelabi::IPluginInfo* info, const std::string& sessionId);
};

}  // namespace halvor::kelo
