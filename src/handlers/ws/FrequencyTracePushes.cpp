#include "kelo/handlers/ws/FrequencyTracePushes.h"

#include <cstdint>
#include <vector>

namespace halvor::kelo {

namespace {

// What a rendering was made of, and its bytes.
struct Rendering {
  bool made = false;
  std::vector<std::uint8_t> traceAmplitude;
  std::vector<std::uint8_t> traceFrequency;
  std::vector<std::uint8_t> maskAmplitude;
  std::vector<std::uint8_t> maskFrequency;
  std::string scale;
  std::string message;
};

// The blocks decide every point, and the scale's bytes every other member.
bool sameAs(const Rendering& last, const SpectrumHelperClass::Decoded& spectrum,
            const std::string& scale) {
  return last.made && last.traceAmplitude == spectrum.traceAmplitude &&
         last.traceFrequency == spectrum.traceFrequency &&
         last.maskAmplitude == spectrum.maskAmplitude &&
         last.maskFrequency == spectrum.maskFrequency && last.scale == scale;
}

}  // namespace

void FrequencyTracePushes::render(const SpectrumHelperClass::Decoded& spectrum,
                                  std::string& message) {
  thread_local Rendering last;
  const std::string scale = spectrum.scale.SerializeAsString();
  if (!sameAs(last, spectrum, scale)) {
    last.made = false;
    last.message = SpectrumHelperClass::wire(spectrum);
    last.traceAmplitude = spectrum.traceAmplitude;
    last.traceFrequency = spectrum.traceFrequency;
    last.maskAmplitude = spectrum.maskAmplitude;
    last.maskFrequency = spectrum.maskFrequency;
    last.scale = scale;
    last.made = true;
  }
  message = last.message;
}

}  // namespace halvor::kelo
