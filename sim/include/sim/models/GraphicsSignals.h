#pragma once

#include <random>
#include <string>

#include "tavelabi/Resource.h"

namespace halvor::sim {

// The demo transmitter's signal measurements at one moment, each a graphics channel's block in
// the host's layout (little-endian, ByteBlockWriter). `seconds` is the time since the model
// started; `random` adds the noise. Every block is made new from these two, nothing is kept.
class GraphicsSignals {
 public:
  GraphicsSignals() = delete;

  // The carrier's scale, kept in the spectrum amplitude channel beside the trace.
  static constexpr double kCenterFrequencyMHz = 98.1;
  static constexpr double kFrequencySpanMHz = 0.4;
  static constexpr double kMinValueDb = -100.0;
  static constexpr double kMaxValueDb = 10.0;
  static constexpr int kDefaultSpectrumPoints = 1024;
  static constexpr int kLissajousPoints = 512;
  static constexpr int kConstellationSymbols = 512;
  static constexpr int kSubCarrierGroups = 12;
  static constexpr int kCorrectionPoints = 256;
  static constexpr int kEqPoints = 64;

  // The stereo programme's level between 0 and 1: it sets the FM deviation, the Lissajous
  // figure's size and the audio vectors, so that they move together.
  static double audioLevel(double seconds);

  // The seven scale keys of the spectrum amplitude channel.
  static tavelabi::Resource spectrumScale();
  // The FM trace: carrier, sidebands as wide as the audio level makes them, noise floor.
  // Amplitudes in whole dBc as signed 16-bit words, frequencies in Hz as 32-bit words: the
  // narrow form, a frequency block twice the amplitude block.
  static tavelabi::ResourceValue spectrumAmplitude(double seconds, int points,
                                                   std::mt19937& random);
  static tavelabi::ResourceValue spectrumFrequency(int points);
  // The limit mask, in the wide form: 4-byte amplitude words beside 4-byte frequencies.
  static tavelabi::ResourceValue maskAmplitude();
  static tavelabi::ResourceValue maskFrequency();

  // QPSK symbols with noise and a slowly turning phase error, as x/y pairs of signed 32-bit
  // words with 24 fraction bits.
  static tavelabi::ResourceValue constellation(double seconds, std::mt19937& random);
  // Sub-carrier groups of 16 bytes: kind, flags, reserved word, two quality figures in
  // thousandths, a level in hundredths and the group's index.
  static tavelabi::ResourceValue subCarrierGroups(double seconds, std::mt19937& random);
  // The left channel against the right, the constellation's layout; the header holds the point
  // count at byte 12.
  static tavelabi::ResourceValue lissajous(double seconds);
  static tavelabi::ResourceValue lissajousHeader();
  // The complementary distribution of the signal's peak power: x the level above the mean in
  // hundredths of a dB, y a thousand times the decimal logarithm of the probability.
  static tavelabi::ResourceValue powerDistribution(double seconds);
  // The pre-correction of the amplifier: gain (2^-27 per bit) and phase (2^32 per 360 degrees)
  // against the input level, one unsigned 32-bit word per step.
  static tavelabi::ResourceValue amAmCorrection(double seconds);
  static tavelabi::ResourceValue amPmCorrection(double seconds);
  // The equaliser: responses in hundredths of a dB, frequencies in Hz.
  static tavelabi::ResourceValue eqResponses(double seconds);
  static tavelabi::ResourceValue eqFrequencies();
  // The fixed 70-byte record of audio and modulation vectors, and its 16-byte header with the
  // two audio sources and input types at bytes 12 to 15.
  static tavelabi::ResourceValue audioModVectors(double seconds);
  static tavelabi::ResourceValue audioModHeader();
};

}  // namespace halvor::sim
