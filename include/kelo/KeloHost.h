#pragma once

#include <string>

#include "kelo/WebKeloInterface.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The one way from code that the web layer calls (frames, WebSocket endpoints, listeners) to the
// host and the plug-in's own identity. Both are carried by the WebKeloInterface plug-in of the
// process-wide application, filled before the first request is served.
class KeloHost {
 public:
  KeloHost() = delete;

  // Throws std::logic_error when the web configuration made no WebKeloInterface: a server
  // without it cannot serve a single route.
  static WebKeloInterface& plugin();
  static tavelabi::ITavel* tavel() { return plugin().tavel; }
  static tavelabi::IPluginInfo* pluginInfo() { return plugin().pluginInfo; }
  // The plug-in's logger, or "" while there is none yet: logging never throws.
  static std::string loggerId();
};

}  // namespace halvor::kelo
