#pragma once

#include <chrono>
#include <mutex>
#include <random>
#include <set>
#include <string>

#include "sim/models/MeterTree.h"
#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The transmitter's meters (MeterTree::demo()): "/system/meter/collection/list" lists the
// collections, a collection lists its groups and a group its meters, each in its "value". Every
// meter is updated at each interval (200 ms unless a fixture says otherwise), so that a client
// subscribed below a group gets pushes: numbers drift around their nominal reading, statuses and
// texts are written again as they stand.
//
// Fixture section "meters", every key optional:
//   "updateIntervalMs": a positive whole number, the time between two updates of every meter;
//   "moving": false stops the updates, so that a test knows every value;
//   "unreadable": [paths]: meters that stay listed in their group but have no resource, so that
//                 reading them fails.
class MeterModel : public Model {
 public:
  static constexpr const char* kCollectionListPath = "/system/meter/collection/list";
  static constexpr int kDefaultIntervalMs = 200;

  std::string name() const override { return "meters"; }
  std::string fixtureSection() const override { return "meters"; }
  void applyFixture(const Json::Value& section) override;
  // The collection list, the collections, groups and meters, where nothing is stored yet.
  void seed() override;
  // Updates every stored meter once per interval; a meter without a resource is left out.
  void tick(const tavelabi::TimePoint& now) override;

  // The resources that seed() creates, for tests.
  static tavelabi::Resource collectionResource(const MeterCollectionDefinition& collection);
  static tavelabi::Resource groupResource(const MeterGroupDefinition& group);
  static tavelabi::Resource meterResource(const MeterDefinition& meter);

 private:
  struct Settings {
    std::chrono::milliseconds interval{kDefaultIntervalMs};
    bool moving = true;
    std::set<std::string> unreadable;
  };

  Settings settings() const;
  void makeUnreadable(const std::string& path);
  void move(const MeterDefinition& meter);
  tavelabi::ResourceValue nextReading(const MeterDefinition& meter,
                                      const tavelabi::ResourceValue& stored);
  double drift(const MeterDefinition& meter, double current);

  mutable std::mutex mutex_;
  Settings settings_;
  // Used by tick() alone, on the loop's thread.
  std::mt19937 random_{20261123};
  bool started_ = false;
  tavelabi::TimePoint lastUpdate_{};
};

}  // namespace halvor::sim
