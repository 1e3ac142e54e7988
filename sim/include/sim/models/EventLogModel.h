#pragma once

#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::sim {

// The transmitter's event log: a few thousand events of the last three weeks (preset, power and
// frequency changes, local/remote changes, alarm changes, RF on and off) on the demo's devices,
// and a new event now and then. Each event is a map with "eventLogId" (INT32), "seconds"
// (DOUBLE, Unix time), "hundredths" (INT32), "eventType", "eventName", "description",
// "severity", "deviceName", "deviceId" and "value" (STRINGs).
//
// Commands: "/command/eventlog/getEvents" (one page, sorted and filtered),
// "/command/eventlog/deleteEvents" (clears the log) and "/command/eventlog/generateCsv" (the
// sorted, filtered log as a CSV file in the host's file area). The log is the model's own state,
// guarded by its lock: it is not a resource of the tree.
//
// Fixture section "eventlog": {"events": [...], "newEvents": bool, "csvDirectory": "..."}; see
// docs/SIMULATOR.md.
class EventLogModel : public Model {
 public:
  static constexpr const char* kGetEvents = "/command/eventlog/getEvents";
  static constexpr const char* kDeleteEvents = "/command/eventlog/deleteEvents";
  static constexpr const char* kGenerateCsv = "/command/eventlog/generateCsv";
  static constexpr const char* kCsvFileName = "eventlog.csv";
  // Events in the demo's log, spread over kDemoDays days up to the installation.
  static constexpr int kDemoEvents = 3000;
  static constexpr int kDemoDays = 21;

  EventLogModel();

  std::string name() const override { return "eventlog"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "eventlog"; }
  // "events" replaces the log (and stops new events unless "newEvents" is true); "csvDirectory"
  // is where generateCsv writes. std::invalid_argument for a section it cannot read.
  void applyFixture(const Json::Value& section) override;
  // The demo's log, unless a fixture gave one.
  void seed() override;
  // A new event every 20 to 90 seconds while new events are on.
  void tick(const tavelabi::TimePoint& now) override;

  // The directory generateCsv writes to when no fixture names one.
  static std::string defaultCsvDirectory();

 private:
  using Record = tavelabi::ResourceValue::Map;
  struct Query {
    std::string displayOrder = "time";
    bool descending = true;
    int eventType = 0;
  };

  tavelabi::Resource getEvents(tavelabi::ResourceAction& action);
  tavelabi::Resource deleteEvents(tavelabi::ResourceAction& action);
  tavelabi::Resource generateCsv(tavelabi::ResourceAction& action);

  static Query queryOf(const tavelabi::Resource& request);
  // The log's records of the query's type, in the query's order. Takes the lock.
  std::vector<Record> selected(const Query& query) const;
  Record makeEvent(double seconds);
  void appendNewEvent();

  mutable std::mutex mutex_;
  std::mutex csvMutex_;
  std::vector<Record> log_;
  bool logFromFixture_ = false;
  bool newEvents_ = true;
  std::string csvDirectory_;
  std::int32_t nextId_ = 1;
  std::mt19937 random_;
  bool started_ = false;
  tavelabi::TimePoint nextEventAt_{};
};

}  // namespace halvor::sim
