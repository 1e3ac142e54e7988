#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <random>
#include <string>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The transmitter's signal measurements: one resource per graphics channel under
// "/system/graphics/", each holding its samples as a byte array under "value" (and some a
// "header"), in the host's little-endian layout (GraphicsSignals). About ten times a second
// every channel is measured again and written by an Update, so that a client subscribed to a
// channel gets pushes; the spectrum's amplitude channel, whose change tells that a whole new
// spectrum is there, is written after its frequency and mask channels.
//
// Fixture section "graphics", every key optional:
//   "updateIntervalMs": a positive whole number, the time between two measurements (100);
//   "moving": false stops the measurements, so that a test knows every block;
//   "spectrumPoints": a positive whole number up to 65536, the trace's points (1024); a fixture
//                     applied after the seeding writes the spectrum again at once.
class GraphicsModel : public Model {
 public:
  static constexpr const char* kPathPrefix = "/system/graphics/";
  static constexpr int kDefaultIntervalMs = 100;
  static constexpr int kMaxSpectrumPoints = 65536;

  std::string name() const override { return "graphics"; }
  std::string fixtureSection() const override { return "graphics"; }
  void applyFixture(const Json::Value& section) override;
  // Every channel, where nothing is stored yet; the spectrum amplitude with its scale keys.
  void seed() override;
  // A new measurement of every channel once per interval.
  void tick(const tavelabi::TimePoint& now) override;

 private:
  struct Settings {
    std::chrono::milliseconds interval{kDefaultIntervalMs};
    bool moving = true;
    int spectrumPoints = 0;  // 0: the default
  };

  Settings settings() const;
  // The channels' blocks at `seconds`, each as the resource keys that an update writes.
  void measure(double seconds, int spectrumPoints, bool create);
  // The spectrum's four channels alone, the amplitude last.
  void measureSpectrum(double seconds, int spectrumPoints, bool create);
  void write(const std::string& channel, const tavelabi::Resource& keys, bool create);

  mutable std::mutex mutex_;
  Settings settings_;
  bool seeded_ = false;
  // Used by seed() and tick() alone, which the host never runs at the same time.
  std::mt19937 random_{20261123};
  std::optional<tavelabi::TimePoint> start_;
  tavelabi::TimePoint lastUpdate_{};
};

}  // namespace halvor::sim
