#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/orban/active": the audio processor's active preset as a binary OrbanPresetName, first as
// it is now, then at each change of "/orban/activePreset/name" (a new preset asked for, or taken).
class WsGetOrbanActivePreset : public KeloWsEndpoint<WsGetOrbanActivePreset> {
 public:
  static constexpr const char* kPath = "/ws/orban/active";
  static constexpr const char* kPattern = "/orban/activePreset/name";

  // The active preset as it is now, read without counting as user activity: the first message
  // is made from it, as every push is made from the pushed resource.
  static tavelabi::Resource firstResource(const web::HttpRequestPtr& req,
                                          const std::string& sessionId, const std::string& path);
  // Checks the session, then serialises the preset of `resource`; a resource without one of the
  // preset's keys throws std::out_of_range and sends nothing.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
