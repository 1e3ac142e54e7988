#pragma once

#include <google/protobuf/repeated_ptr_field.h>

#include <cstdint>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The spectrum: a trace, a limit mask and the scale of both, from four graphics channels.
class SpectrumHelperClass {
 public:
  SpectrumHelperClass() = delete;

  // The spectrum as plain numbers: the seven scale members in a message of their own, the mask's
  // and the trace's points as arrays, and the four blocks they were decoded from.
  struct Decoded {
    protobuf::Spectrum scale;
    PointColumns mask;
    PointColumns trace;
    std::vector<std::uint8_t> traceAmplitude;
    std::vector<std::uint8_t> traceFrequency;
    std::vector<std::uint8_t> maskAmplitude;
    std::vector<std::uint8_t> maskFrequency;
  };

  // Field numbers of the two lists in Spectrum.
  static constexpr int kMaskPointsField = protobuf::Spectrum::kMaskPointsFieldNumber;
  static constexpr int kSpectrumPointsField = protobuf::Spectrum::kSpectrumPointsFieldNumber;

  // Reads the trace's amplitude (with the seven scale keys) and frequency channels, then the
  // mask's, and appends one point per entry to `result`, which must be fresh. Every read carries
  // the same flag; nothing is cached between calls.
  static void getSpectrum(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                          tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                          protobuf::Spectrum& result, bool byPassSessionActivityTimerUpdate);
  // The same reads in the same order, the points left as numbers: what the routes print.
  static void readSpectrum(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                           tavelabi::IPluginInfo* pluginInfo, const std::string& sessionId,
                           bool byPassSessionActivityTimerUpdate, Decoded& result);
  // The JSON text and the binary form of the message that getSpectrum makes of the same reads.
  static std::string json(const Decoded& spectrum);
  static std::string wire(const Decoded& spectrum);
};

}  // namespace halvor::kelo
