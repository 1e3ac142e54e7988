#pragma once

#include <google/protobuf/repeated_ptr_field.h>

#include <cstdint>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The spectrum: a trace, a limit mask and the scale of both, from four graphics channels.
class SpectrumHelperClass {
 public:
  SpectrumHelperClass() = delete;

  // Reads the trace's amplitude (with the seven scale keys) and frequency channels, then the
  // mask's, and appends one point per entry to `result`, which must be fresh. Every read carries
  // the same flag; nothing is cached between calls.
  static void getSpectrum(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                          tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                          protobuf::Spectrum& result, bool byPassSessionActivityTimerUpdate);
};

}  // namespace halvor::kelo
