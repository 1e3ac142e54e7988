#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/alarms/active": the active alarms as a binary halvor::protobuf::AlarmList, first as they
// are, then the whole list again at every change of "/system/alarms/active".
class WsActiveAlarms : public KeloWsEndpoint<WsActiveAlarms> {
 public:
  static constexpr const char* kPath = "/ws/alarms/active";
  static constexpr const char* kPattern = "/system/alarms/active";

  // Checks the session, then makes the list: from the pushed resource's "value" on a change,
  // read from the host for the first message (an empty resource). Each alarm is read anew.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
