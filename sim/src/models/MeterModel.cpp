#include "sim/models/MeterModel.h"

#include <json/value.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;
using Kind = MeterDefinition::Kind;

namespace {

template <class Definition>
std::vector<std::string> pathsOf(const std::vector<Definition>& children) {
  std::vector<std::string> paths;
  for (const Definition& child : children) paths.push_back(child.path);
  return paths;
}

ResourceValueType typeOf(Kind kind) {
  switch (kind) {
    case Kind::Int32:
      return ResourceValueType::INT32;
    case Kind::Bool:
      return ResourceValueType::BOOL;
    case Kind::Text:
      return ResourceValueType::STRING;
    case Kind::Double:
      break;
  }
  return ResourceValueType::DOUBLE;
}

ResourceValue nominalReading(const MeterDefinition& meter) {
  switch (meter.kind) {
    case Kind::Int32:
      return ResourceValue(static_cast<int>(meter.nominal));
    case Kind::Bool:
      return ResourceValue(meter.flag);
    case Kind::Text:
      return ResourceValue(meter.text);
    case Kind::Double:
      break;
  }
  return ResourceValue(meter.nominal);
}

}  // namespace

void MeterModel::applyFixture(const Json::Value& section) {
  if (!section.isObject()) throw std::invalid_argument("meters: the section must be an object");
  std::vector<std::string> unreadable;
  {
    std::lock_guard lock(mutex_);
    if (section.isMember("updateIntervalMs")) {
      const Json::Value& interval = section["updateIntervalMs"];
      if (!interval.isInt() || interval.asInt() <= 0) {
        throw std::invalid_argument("meters.updateIntervalMs: a positive whole number");
      }
      settings_.interval = std::chrono::milliseconds(interval.asInt());
    }
    if (section.isMember("moving")) {
      if (!section["moving"].isBool()) throw std::invalid_argument("meters.moving: true or false");
      settings_.moving = section["moving"].asBool();
    }
    for (const Json::Value& path : section["unreadable"]) {
      if (!path.isString()) throw std::invalid_argument("meters.unreadable: a list of paths");
      settings_.unreadable.insert(path.asString());
      unreadable.push_back(path.asString());
    }
  }
  // A fixture may come after seed(): the meter's resource goes, its group still lists it.
  for (const std::string& path : unreadable) makeUnreadable(path);
}

void MeterModel::seed() {
  const Settings now = settings();
  std::vector<std::string> collections;
  for (const MeterCollectionDefinition& collection : MeterTree::demo()) {
    collections.push_back(collection.path);
    host().createIfAbsent(collection.path, collectionResource(collection));
    for (const MeterGroupDefinition& group : collection.groups) {
      host().createIfAbsent(group.path, groupResource(group));
      for (const MeterDefinition& meter : group.meters) {
        if (now.unreadable.count(meter.path) == 0) {
          host().createIfAbsent(meter.path, meterResource(meter));
        }
      }
    }
  }
  host().createIfAbsent(kCollectionListPath, Resource(ResourceValue(collections)));
}

void MeterModel::tick(const tavelabi::TimePoint& now) {
  const Settings current = settings();
  if (!current.moving) return;
  if (!started_) {
    started_ = true;
    lastUpdate_ = now;
    return;
  }
  if (now - lastUpdate_ < current.interval) return;
  lastUpdate_ = now;
  for (const MeterDefinition* meter : MeterTree::meters()) move(*meter);
}

Resource MeterModel::collectionResource(const MeterCollectionDefinition& collection) {
  Resource resource(ResourceValue(pathsOf(collection.groups)));
  resource.values["label"] = ResourceValue(collection.label);
  resource.values["path"] = ResourceValue(collection.path);
  return resource;
}

Resource MeterModel::groupResource(const MeterGroupDefinition& group) {
  Resource resource(ResourceValue(pathsOf(group.meters)));
  resource.values["guid"] = ResourceValue(MeterTree::guidOf(group.path));
  resource.values["label"] = ResourceValue(group.label);
  resource.values["path"] = ResourceValue(group.path);
  return resource;
}

Resource MeterModel::meterResource(const MeterDefinition& meter) {
  Resource resource(nominalReading(meter));
  resource.values["guid"] = ResourceValue(MeterTree::guidOf(meter.path));
  resource.values["path"] = ResourceValue(meter.path);
  resource.values["label"] = ResourceValue(meter.label);
  resource.values["units"] = ResourceValue(meter.units);
  // A status or a text has no range and no digits to show.
  if (meter.kind == Kind::Double || meter.kind == Kind::Int32) {
    resource.values["min"] = ResourceValue(meter.min);
    resource.values["max"] = ResourceValue(meter.max);
    resource.values["digitsToDisplay"] = ResourceValue(meter.digitsToDisplay);
  }
  if (!meter.deviceName.empty()) resource.values["deviceName"] = ResourceValue(meter.deviceName);
  if (!meter.deviceId.empty()) resource.values["deviceId"] = ResourceValue(meter.deviceId);
  return resource;
}

MeterModel::Settings MeterModel::settings() const {
  std::lock_guard lock(mutex_);
  return settings_;
}

void MeterModel::makeUnreadable(const std::string& path) {
  if (!host().peek(path)) return;
  ResourceAction remove(CCRUD::Delete, path, nullptr, "");
  host().processInternalAction(remove);
}

// The next reading goes on from the stored one, so that a value a fixture or a client stored is
// where the drift starts. A reading of another type than the meter's is left alone.
void MeterModel::move(const MeterDefinition& meter) {
  const std::optional<Resource> stored = host().peek(meter.path);
  if (!stored) return;
  const auto value = stored->values.find("value");
  if (value == stored->values.end() || value->second.getType() != typeOf(meter.kind)) return;
  ResourceAction update(CCRUD::Update, meter.path, Resource(nextReading(meter, value->second)),
                        nullptr, "");
  try {
    host().processInternalAction(update);
  } catch (const tavelabi::NonExistentResourcePathException&) {
    // A client deleted the meter meanwhile; it stays deleted.
  }
}

ResourceValue MeterModel::nextReading(const MeterDefinition& meter, const ResourceValue& stored) {
  switch (meter.kind) {
    case Kind::Double:
      return ResourceValue(drift(meter, stored.getDoubleValue()));
    case Kind::Int32:
      return ResourceValue(static_cast<int>(std::lround(drift(meter, stored.getIntValue()))));
    case Kind::Bool:
    case Kind::Text:
      break;
  }
  return stored;
}

// A step of a random walk that is pulled back towards the nominal reading and kept in range.
double MeterModel::drift(const MeterDefinition& meter, double current) {
  std::normal_distribution<double> noise(0.0, meter.step);
  const double next = current + 0.1 * (meter.nominal - current) + noise(random_);
  return std::clamp(next, meter.min, meter.max);
}

}  // namespace halvor::sim
