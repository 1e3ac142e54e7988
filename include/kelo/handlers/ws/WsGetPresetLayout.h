#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/presets/layout": the layout of the preset pages, the host's JSON text itself (not a
// protobuf message) in a Binary frame, first as the host has it, then at every change.
class WsGetPresetLayout : public KeloWsEndpoint<WsGetPresetLayout> {
 public:
  static constexpr const char* kPath = "/ws/presets/layout";
  static constexpr const char* kPattern = "/presets/layout";

  // Reads the host first; the pushed resource's "value" wins over the read's.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
