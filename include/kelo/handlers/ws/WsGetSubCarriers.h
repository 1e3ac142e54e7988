#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/graphics/signalConstellation/subCarriers": the sub-carrier groups as a binary message, first
// as it is, then again at every change of the channel "exConstellationGroupData". Its reads of the
// channels count as user activity; only the session check does not. Unlike most graphs, its pushes
// count as the session's activity.
class WsGetSubCarriers : public KeloWsEndpoint<WsGetSubCarriers> {
 public:
  static constexpr const char* kPath = "/ws/graphics/signalConstellation/subCarriers";
  static constexpr const char* kPattern = "/system/graphics/exConstellationGroupData";
  // The value of "byPassSessionActivityTimerUpdate" on the reads of the channels.
  static constexpr bool kBypassActivity = false;

  // Checks the session with a read of `path` that is not activity, then reads the channels
  // afresh: the pushed resource is not used.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
