#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/ws/FrequencyTracePushes.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

SpectrumHelperClass::Decoded spectrumOf(const Bytes& amplitude, const Bytes& frequency,
                                        const Bytes& maskAmplitude, const Bytes& maskFrequency,
                                        double centerFrequency) {
  SpectrumHelperClass::Decoded spectrum;
  spectrum.scale.mutable_centerfrequency()->set_value(centerFrequency);
  spectrum.scale.mutable_centerfrequencyunits()->set_value("MHz");
  spectrum.traceAmplitude = amplitude;
  spectrum.traceFrequency = frequency;
  spectrum.maskAmplitude = maskAmplitude;
  spectrum.maskFrequency = maskFrequency;
  GraphicsDecoders::decodeTrace(amplitude, frequency, spectrum.trace);
  GraphicsDecoders::decodeTrace(maskAmplitude, maskFrequency, spectrum.mask);
  return spectrum;
}

std::string rendered(const SpectrumHelperClass::Decoded& spectrum) {
  std::string message;
  FrequencyTracePushes::render(spectrum, message);
  return message;
}

TEST(FrequencyTracePushesTest, EveryPushIsTheSpectrumsOwnBytesWhateverWasRenderedBefore) {
  const Bytes amplitude = words16({1, 2, 3});
  const Bytes frequency = words32({10, 20, 30});
  const Bytes maskAmplitude = words16({7});
  const Bytes maskFrequency = words32({70});
  const auto first = spectrumOf(amplitude, frequency, maskAmplitude, maskFrequency, 98.1);
  EXPECT_EQ(rendered(first), SpectrumHelperClass::wire(first));
  // The same reads again: the same bytes.
  EXPECT_EQ(rendered(first), SpectrumHelperClass::wire(first));
  // Any one of the four blocks or the scale changed: the new spectrum's bytes, not the last ones.
  const std::vector<SpectrumHelperClass::Decoded> changed = {
      spectrumOf(words16({1, 2, 4}), frequency, maskAmplitude, maskFrequency, 98.1),
      spectrumOf(amplitude, words32({10, 20, 31}), maskAmplitude, maskFrequency, 98.1),
      spectrumOf(amplitude, frequency, words16({8}), maskFrequency, 98.1),
      spectrumOf(amplitude, frequency, maskAmplitude, words32({71}), 98.1),
      spectrumOf(amplitude, frequency, maskAmplitude, maskFrequency, 98.2)};
  for (const auto& spectrum : changed) {
    const std::string bytes = rendered(spectrum);
    EXPECT_EQ(bytes, SpectrumHelperClass::wire(spectrum));
    EXPECT_NE(bytes, SpectrumHelperClass::wire(first));
    EXPECT_EQ(rendered(first), SpectrumHelperClass::wire(first));
  }
}

TEST(FrequencyTracePushesTest, EachThreadKeepsItsOwnRendering) {
  const auto one = spectrumOf(words16({1}), words32({10}), {}, {}, 1.0);
  const auto other = spectrumOf(words16({2}), words32({20}), {}, {}, 2.0);
  EXPECT_EQ(rendered(one), SpectrumHelperClass::wire(one));
  std::string fromOtherThread;
  std::thread([&] { fromOtherThread = rendered(other); }).join();
  EXPECT_EQ(fromOtherThread, SpectrumHelperClass::wire(other));
  EXPECT_EQ(rendered(one), SpectrumHelperClass::wire(one));
}

}  // namespace
}  // namespace halvor::kelo::test
