#pragma once

#include <string>

#include "kelo/controllers/KeloWsController.h"

namespace halvor::kelo {

// "/ws/settings?id=<guid>": one setting, as a binary QuoSetting that holds its value and as much
// of its transition and error state as the host gives, first as it is now and then on every
// change. The guid "a-b-c" names the path "/a/b/c"; an empty one subscribes nothing.
class WsGetSetting : public KeloWsController<WsGetSetting, true> {
 public:
  static constexpr const char* kPath = "/ws/settings";

  void initialSetupAndMessage(const web::HttpRequestPtr& req,
                              const web::WebSocketConnectionPtr& conn,
                              std::string sessionId) override;

  // Reads the setting afresh without counting as user activity (a dead session throws), then
  // serialises its QuoSetting. A setting without "value" throws std::out_of_range.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
