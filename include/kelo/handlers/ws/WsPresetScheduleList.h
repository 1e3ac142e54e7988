#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/schedules": the preset schedule as a binary halvor::protobuf::PresetScheduleList, first as
// the host has it, then at every change of "/scheduler/rules".
class WsPresetScheduleList : public KeloWsEndpoint<WsPresetScheduleList> {
 public:
  static constexpr const char* kPath = "/ws/schedules";
  static constexpr const char* kPattern = "/scheduler/rules";

  // Reads the rules afresh whatever the resource holds (not counted as user activity) and
  // makes every rule as the list of rules does, with the preset names known so far; one rule
  // that fails fails the message.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
