#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/presets/hardwareErrors": the hardware's preset errors as a binary
// halvor::protobuf::HardWareErrorList: an empty list first, then the list of every change of
// "/presets/hardwareErrors". The host is never read.
class WsGetPresetHardwareErrors : public KeloWsEndpoint<WsGetPresetHardwareErrors> {
 public:
  static constexpr const char* kPath = "/ws/presets/hardwareErrors";
  static constexpr const char* kPattern = "/presets/hardwareErrors";

  // The first message: an empty list.
  static tavelabi::Resource firstResource(const web::HttpRequestPtr& req,
                                          const std::string& sessionId, const std::string& pattern);
  // Rendered from the pushed resource alone: one rendering serves every client.
  static constexpr bool kMessageFromResourceOnly = true;

  // The pushed "value" is the list of texts; a resource without it makes no message (an empty
  // payload, which is also what an empty list serialises to).
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
