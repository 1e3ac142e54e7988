#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/presets/active": the preset on air as a binary halvor::protobuf::BroadcastPreset, first as
// the host has it, then at every change of "/presets/active/details".
class WsGetActivePreset : public KeloWsEndpoint<WsGetActivePreset> {
 public:
  static constexpr const char* kPath = "/ws/presets/active";
  static constexpr const char* kPattern = "/presets/active/details";

  // Reads the host first: a push whose resource holds both "guid" and "value" is made from it,
  // anything else from the read.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
