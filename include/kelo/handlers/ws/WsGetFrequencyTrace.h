#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/graphics/spectrum": the spectrum as a binary message, first as it is, then again at every
// change of the channel "exSpectrumAmplitude". Its reads of the channels do not count as user
// activity, so that a graph left open does not keep a session alive. The trace, its scale and the
// mask are all read again when the amplitude channel changes; a change of the frequency or mask
// channels alone pushes nothing.
class WsGetSpectrum : public KeloWsEndpoint<WsGetSpectrum> {
 public:
  static constexpr const char* kPath = "/ws/graphics/spectrum";
  static constexpr const char* kPattern = "/system/graphics/exSpectrumAmplitude";
  // The value of "byPassSessionActivityTimerUpdate" on the reads of the channels.
  static constexpr bool kBypassActivity = true;

  // Checks the session with a read of `path` that is not activity, then reads the channels
  // afresh: the pushed resource is not used.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
