#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// What the alarm endpoints (REST and WebSocket) share: one alarm resource made into an Alarm,
// and a list of alarm paths made into an AlarmList. Every read is under `sessionId`; host
// failures pass through, so that an alarm that cannot be read fails the whole answer.
class AlarmEndpointHelperClass {
 public:
  AlarmEndpointHelperClass() = delete;

  // The alarm at `path`, read now. Keys the resource lacks leave their fields unset; the device
  // is always present, empty when the resource names none.
  static std::shared_ptr<protobuf::Alarm> getCurrentAlarmInfo(const web::HttpRequestPtr& req,
                                                              tavelabi::ITavel* host,
                                                              tavelabi::IPluginInfo* info,
                                                              std::string sessionId,
                                                              std::string path);

  // The alarms whose paths the "value" list of `resource` holds, in list order; a resource
  // without "value" stands for the host's list of active alarms, which is read.
  static std::shared_ptr<protobuf::AlarmList> generateAlarmList(const web::HttpRequestPtr& req,
                                                                tavelabi::ITavel* host,
                                                                tavelabi::IPluginInfo* info,
                                                                std::string sessionId,
                                                                tavelabi::Resource resource);

  static constexpr const char* kActiveAlarmsPath = "/system/alarms/active";
};

}  // namespace halvor::kelo
