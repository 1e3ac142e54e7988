#include "sim/models/GraphicsModel.h"

#include <json/value.h>

#include <stdexcept>

#include "sim/SimTavel.h"
#include "sim/models/GraphicsSignals.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

int positiveInt(const Json::Value& section, const char* key, int max) {
  const Json::Value& value = section[key];
  if (!value.isInt() || value.asInt() <= 0 || value.asInt() > max) {
    throw std::invalid_argument(std::string("graphics.") + key +
                                ": a positive whole number up to " + std::to_string(max));
  }
  return value.asInt();
}

Resource valueOnly(const ResourceValue& value) { return Resource("value", value); }

Resource valueAndHeader(const ResourceValue& value, const ResourceValue& header) {
  Resource keys("value", value);
  keys.values["header"] = header;
  return keys;
}

}  // namespace

void GraphicsModel::applyFixture(const Json::Value& section) {
  if (!section.isObject()) throw std::invalid_argument("graphics: the section must be an object");
  bool resized = false;
  {
    std::lock_guard lock(mutex_);
    if (section.isMember("updateIntervalMs")) {
      settings_.interval =
          std::chrono::milliseconds(positiveInt(section, "updateIntervalMs", 60000));
    }
    if (section.isMember("moving")) {
      if (!section["moving"].isBool())
        throw std::invalid_argument("graphics.moving: true or false");
      settings_.moving = section["moving"].asBool();
    }
    if (section.isMember("spectrumPoints")) {
      settings_.spectrumPoints = positiveInt(section, "spectrumPoints", kMaxSpectrumPoints);
      resized = seeded_;
    }
  }
  // A fixture that comes after seed() gets its trace length at once, moving or not.
  if (resized) measureSpectrum(0.0, settings().spectrumPoints, false);
}

GraphicsModel::Settings GraphicsModel::settings() const {
  std::lock_guard lock(mutex_);
  return settings_;
}

void GraphicsModel::seed() {
  const Settings now = settings();
  measure(0.0, now.spectrumPoints, true);
  std::lock_guard lock(mutex_);
  seeded_ = true;
}

void GraphicsModel::tick(const tavelabi::TimePoint& now) {
  const Settings current = settings();
  if (!current.moving) return;
  if (!start_) {
    start_ = now;
    lastUpdate_ = now;
    return;
  }
  if (now - lastUpdate_ < current.interval) return;
  lastUpdate_ = now;
  const double seconds = std::chrono::duration<double>(now - *start_).count();
  measure(seconds, current.spectrumPoints, false);
}

void GraphicsModel::measureSpectrum(double seconds, int spectrumPoints, bool create) {
  using S = GraphicsSignals;
  const int points = spectrumPoints > 0 ? spectrumPoints : S::kDefaultSpectrumPoints;
  // The spectrum's frequency and mask channels first, its amplitude channel last.
  write("exSpectrumFrequency", valueOnly(S::spectrumFrequency(points)), create);
  write("exSpectrumMaskAmplitude", valueOnly(S::maskAmplitude()), create);
  write("exSpectrumMaskFrequency", valueOnly(S::maskFrequency()), create);
  Resource amplitude = create ? S::spectrumScale() : Resource();
  amplitude.values["value"] = S::spectrumAmplitude(seconds, points, random_);
  write("exSpectrumAmplitude", amplitude, create);
}

void GraphicsModel::measure(double seconds, int spectrumPoints, bool create) {
  using S = GraphicsSignals;
  measureSpectrum(seconds, spectrumPoints, create);

  write("exConstellationData", valueOnly(S::constellation(seconds, random_)), create);
  write("exConstellationGroupData", valueOnly(S::subCarrierGroups(seconds, random_)), create);
  write("exLissajousData", valueAndHeader(S::lissajous(seconds), S::lissajousHeader()), create);
  write("exWaterfallData", valueOnly(S::powerDistribution(seconds)), create);
  write("exAmAmAmplitude", valueOnly(S::amAmCorrection(seconds)), create);
  write("exAmPmAmplitude", valueOnly(S::amPmCorrection(seconds)), create);
  // The frequencies before the responses, whose change a subscriber is told of.
  write("exLmsFreqVector", valueOnly(S::eqFrequencies()), create);
  write("exLmsFilterFreqDomain", valueOnly(S::eqResponses(seconds)), create);
  write("exAudioModVector", valueAndHeader(S::audioModVectors(seconds), S::audioModHeader()),
        create);
}

// Seeding creates where nothing is stored, so that a fixture's channel stays; a measurement
// updates the keys it measures, so that other keys (the spectrum's scale) stay as stored.
void GraphicsModel::write(const std::string& channel, const Resource& keys, bool create) {
  const std::string path = kPathPrefix + channel;
  if (create) {
    host().createIfAbsent(path, keys);
    return;
  }
  ResourceAction update(CCRUD::Update, path, keys, nullptr, "");
  try {
    host().processInternalAction(update);
  } catch (const tavelabi::NonExistentResourcePathException&) {
    // A client deleted the channel meanwhile; it stays deleted.
  }
}

}  // namespace halvor::sim
