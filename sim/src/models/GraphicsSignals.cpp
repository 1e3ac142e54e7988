#include "sim/models/GraphicsSignals.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "sim/models/ByteBlockWriter.h"

namespace halvor::sim {

using tavelabi::Resource;
using tavelabi::ResourceValue;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kFixedPointOne = 16777216.0;  // 2^24
constexpr double kGainOne = 134217728.0;       // 2^27
constexpr double kWordsPerDegree = 4294967296.0 / 360.0;
constexpr double kNoiseFloorDb = -85.0;

std::int32_t fixedPoint(double value) {
  return static_cast<std::int32_t>(std::lround(std::clamp(value, -127.0, 127.0) * kFixedPointOne));
}

std::uint32_t unsignedWord(double value) {
  return static_cast<std::uint32_t>(std::llround(std::clamp(value, 0.0, 4294967295.0)));
}

std::int16_t signed16(double value) {
  return static_cast<std::int16_t>(std::lround(std::clamp(value, -32768.0, 32767.0)));
}

std::uint16_t unsigned16(double value) {
  return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, 65535.0)));
}

// The two stereo channels at sample time t: a tone in each, the right one a fifth above, both
// at the programme's level.
double leftSample(double t, double level) { return level * std::sin(2 * kPi * 440.0 * t); }
double rightSample(double t, double level) {
  return level * 0.8 * std::sin(2 * kPi * 660.0 * t + 0.5);
}

// The FM signal's spectral level at `offsetHz` from the carrier, in dBc: flat-topped within the
// occupied band (the deviation grows with the audio), falling steeply outside it.
double fmLevelDb(double offsetHz, double level) {
  const double halfWidth = 15000.0 + 60000.0 * level;
  const double distance = std::abs(offsetHz) / halfWidth;
  if (distance <= 1.0) return -12.0 * distance * distance;
  return -12.0 - 60.0 * (distance - 1.0);
}

// The mask's corners: offset from the carrier in Hz, limit in dBc.
struct MaskCorner {
  double offsetHz;
  double levelDb;
};
constexpr MaskCorner kMask[] = {{-200000, -80}, {-120000, -80}, {-120000, -25}, {-60000, -25},
                                {-60000, 0},    {60000, 0},     {60000, -25},   {120000, -25},
                                {120000, -80},  {200000, -80}};

}  // namespace

double GraphicsSignals::audioLevel(double seconds) {
  return 0.55 + 0.35 * std::sin(2 * kPi * seconds / 7.0) * std::sin(2 * kPi * seconds / 2.3);
}

Resource GraphicsSignals::spectrumScale() {
  Resource scale;
  scale.values["centerFrequency"] = ResourceValue(kCenterFrequencyMHz);
  scale.values["centerFrequencyUnits"] = ResourceValue(std::string("MHz"));
  scale.values["frequencySpan"] = ResourceValue(kFrequencySpanMHz);
  scale.values["minValue"] = ResourceValue(kMinValueDb);
  scale.values["minValueUnits"] = ResourceValue(std::string("dBc"));
  scale.values["maxValue"] = ResourceValue(kMaxValueDb);
  scale.values["maxValueUnits"] = ResourceValue(std::string("dBc"));
  return scale;
}

ResourceValue GraphicsSignals::spectrumFrequency(int points) {
  ByteBlockWriter block;
  const double start = (kCenterFrequencyMHz - kFrequencySpanMHz / 2) * 1e6;
  const double step = kFrequencySpanMHz * 1e6 / std::max(1, points - 1);
  for (int i = 0; i < points; ++i)
    block.putSigned32(static_cast<std::int32_t>(std::lround(start + i * step)));
  return block.value();
}

ResourceValue GraphicsSignals::spectrumAmplitude(double seconds, int points, std::mt19937& random) {
  std::normal_distribution<double> noise(0.0, 2.0);
  const double level = audioLevel(seconds);
  const double step = kFrequencySpanMHz * 1e6 / std::max(1, points - 1);
  ByteBlockWriter block;
  for (int i = 0; i < points; ++i) {
    const double offset = -kFrequencySpanMHz * 1e6 / 2 + i * step;
    // The signal over the noise floor, each with its own noise.
    const double signal = fmLevelDb(offset, level) + 0.5 * noise(random);
    block.putSigned16(signed16(std::max(signal, kNoiseFloorDb + noise(random))));
  }
  return block.value();
}

ResourceValue GraphicsSignals::maskAmplitude() {
  ByteBlockWriter block;
  for (const MaskCorner& corner : kMask) {
    block.putSigned32(static_cast<std::int32_t>(signed16(corner.levelDb)));
  }
  return block.value();
}

ResourceValue GraphicsSignals::maskFrequency() {
  ByteBlockWriter block;
  for (const MaskCorner& corner : kMask) {
    block.putSigned32(
        static_cast<std::int32_t>(std::lround(kCenterFrequencyMHz * 1e6 + corner.offsetHz)));
  }
  return block.value();
}

ResourceValue GraphicsSignals::constellation(double seconds, std::mt19937& random) {
  std::normal_distribution<double> noise(0.0, 0.045);
  std::uniform_int_distribution<int> symbol(0, 3);
  const double phaseError = 0.08 * std::sin(2 * kPi * seconds / 5.0);
  ByteBlockWriter block;
  for (int i = 0; i < kConstellationSymbols; ++i) {
    const int s = symbol(random);
    const double angle = kPi / 4 + s * kPi / 2 + phaseError;
    block.putSigned32(fixedPoint(0.7 * std::cos(angle) + noise(random)));
    block.putSigned32(fixedPoint(0.7 * std::sin(angle) + noise(random)));
  }
  return block.value();
}

ResourceValue GraphicsSignals::subCarrierGroups(double seconds, std::mt19937& random) {
  std::normal_distribution<double> jitter(0.0, 0.3);
  ByteBlockWriter block;
  for (int group = 0; group < kSubCarrierGroups; ++group) {
    block.put8(1);                                   // kind
    block.put8(0);                                   // flags
    block.put16(static_cast<std::uint16_t>(group));  // reserved
    // Quality in thousandths of a dB, lower towards the band's edges, and a level in hundredths.
    const double edge = std::abs(group - (kSubCarrierGroups - 1) / 2.0);
    const double quality = 24.0 - 0.6 * edge + 0.5 * std::sin(seconds + group) + jitter(random);
    block.putSigned32(static_cast<std::int32_t>(std::lround(quality * 1000)));
    block.putSigned32(static_cast<std::int32_t>(std::lround((quality - 3.0) * 1000)));
    block.putSigned16(signed16((-20.0 - 0.4 * edge + jitter(random)) * 100));
    block.putSigned16(static_cast<std::int16_t>(group));
  }
  return block.value();
}

ResourceValue GraphicsSignals::lissajous(double seconds) {
  const double level = audioLevel(seconds);
  const double sampleTime = 1.0 / 48000.0;
  ByteBlockWriter block;
  for (int i = 0; i < kLissajousPoints; ++i) {
    const double t = seconds + i * sampleTime;
    block.putSigned32(fixedPoint(leftSample(t, level)));
    block.putSigned32(fixedPoint(rightSample(t, level)));
  }
  return block.value();
}

ResourceValue GraphicsSignals::lissajousHeader() {
  ByteBlockWriter block;
  for (int i = 0; i < 12; ++i) block.put8(0);
  block.put16(static_cast<std::uint16_t>(kLissajousPoints));
  block.put16(0);
  return block.value();
}

ResourceValue GraphicsSignals::powerDistribution(double seconds) {
  // A Gaussian signal's peaks, cut a little above 9 dB by the crest factor reduction.
  const double clip = 9.2 + 0.3 * std::sin(2 * kPi * seconds / 11.0);
  ByteBlockWriter block;
  for (int hundredths = 0; hundredths <= 1200; hundredths += 10) {
    const double db = hundredths / 100.0;
    double probability = std::exp(-std::pow(10.0, db / 10.0));
    if (db > clip) probability *= std::exp(-(db - clip) * 8.0);
    block.put16(static_cast<std::uint16_t>(hundredths));
    block.putSigned16(signed16(1000.0 * std::log10(std::max(probability, 1e-30))));
  }
  return block.value();
}

ResourceValue GraphicsSignals::amAmCorrection(double seconds) {
  const double expansion = 0.30 + 0.02 * std::sin(2 * kPi * seconds / 13.0);
  ByteBlockWriter block;
  for (int i = 0; i < kCorrectionPoints; ++i) {
    const double input = i / double(kCorrectionPoints - 1);
    block.put32(unsignedWord((1.0 + expansion * input * input * input) * kGainOne));
  }
  return block.value();
}

ResourceValue GraphicsSignals::amPmCorrection(double seconds) {
  const double peak = 6.0 + 0.5 * std::sin(2 * kPi * seconds / 17.0);
  ByteBlockWriter block;
  for (int i = 0; i < kCorrectionPoints; ++i) {
    const double input = i / double(kCorrectionPoints - 1);
    block.put32(unsignedWord(peak * input * input * kWordsPerDegree));
  }
  return block.value();
}

ResourceValue GraphicsSignals::eqResponses(double seconds) {
  ByteBlockWriter block;
  for (int i = 0; i < kEqPoints; ++i) {
    const double ripple =
        0.4 * std::sin(i * 0.35 + seconds * 0.2) - 1.5 * std::pow(std::abs(i - 31.5) / 32, 4);
    block.putSigned16(signed16(ripple * 100));
  }
  return block.value();
}

ResourceValue GraphicsSignals::eqFrequencies() {
  ByteBlockWriter block;
  for (int i = 0; i < kEqPoints; ++i) block.putSigned32(-100000 + i * 200000 / (kEqPoints - 1));
  return block.value();
}

ResourceValue GraphicsSignals::audioModVectors(double seconds) {
  const double level = audioLevel(seconds);
  // An audio vector: left, right and mono levels in hundredths of a percent of full scale.
  auto audio = [&](ByteBlockWriter& block, double scale) {
    block.put16(unsigned16(level * scale * 10000));
    block.put16(unsigned16(level * scale * 0.8 * 10000));
    block.put16(unsigned16(level * scale * 0.9 * 10000));
  };
  // A modulation vector: total modulation in hundredths of a percent, then four signed parts.
  auto modulation = [&](ByteBlockWriter& block, double scale) {
    block.put16(unsigned16(level * scale * 10000));
    block.putSigned16(signed16(level * scale * 4500));
    block.putSigned16(signed16(-level * scale * 1200));
    block.putSigned16(signed16(900));
    block.putSigned16(signed16(std::sin(seconds) * 300));
  };
  ByteBlockWriter block;
  audio(block, 1.0);       // 0
  audio(block, 0.95);      // 6
  modulation(block, 1.0);  // 12
  modulation(block, 0.9);  // 22
  audio(block, 0.8);       // 32
  audio(block, 0.75);      // 38
  modulation(block, 0.8);  // 44
  modulation(block, 0.7);  // 54
  audio(block, 0.6);       // 64
  return block.value();
}

ResourceValue GraphicsSignals::audioModHeader() {
  ByteBlockWriter block;
  for (int i = 0; i < 12; ++i) block.put8(0);
  block.put8(1);  // first source: analog over the AES input
  block.put8(0);  // analog
  block.put8(3);  // second source: digital AES
  block.put8(1);  // digital
  return block.value();
}

}  // namespace halvor::sim
