#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/presets/summaryList": the presets as a binary halvor::protobuf::BroadcastPresetList, first
// as the host lists them, then at every change of "/presets/list".
class WsGetPresetSummaryList : public KeloWsEndpoint<WsGetPresetSummaryList> {
 public:
  static constexpr const char* kPath = "/ws/presets/summaryList";
  static constexpr const char* kPattern = "/presets/list";

  // A pushed resource with "value" is the list, and the host is not read; otherwise the host's
  // list is read, and its "value" is required.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
