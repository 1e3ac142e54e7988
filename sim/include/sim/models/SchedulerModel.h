#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::sim {

// The preset schedule: rules in "/scheduler/rules" ("value": rule id -> rule), the conflicts
// between them in "/scheduler/conflictEvents", and "/scheduler/hardwareResponseStatus", through
// which the hardware confirms each change ("value" true and "status" 0 for success, another
// number for a refusal) after a delay. The commands add, edit and delete rules, and work out the
// activations of a day and the activation counts of a period from the rules themselves.
//
// A rule holds on the dates from (startMonth, startDay) to (endMonth, endDay), a span that may
// run over the new year, on its days of the week ("dayOfWeek"); it activates its preset at
// startTime and then every repeatsEverySeconds up to endTime (once when that is 0). Times are
// "HH:MM" or "HH:MM:SS", dates "YYYY-MM-DD". A rule with an impossible date or time, or a preset
// that the preset list does not have, is refused with status 3; an edit or delete of an unknown
// rule with status 4; the rules stay as they were.
class SchedulerModel : public Model {
 public:
  std::string name() const override { return "scheduler"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "scheduler"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  static constexpr int kRefusedRule = 3;
  static constexpr int kUnknownRule = 4;

  // Seconds since midnight of "HH:MM" or "HH:MM:SS"; nothing for anything else.
  static std::optional<int> secondsOf(const std::string& time);
  // Days since 1970-01-01 of "YYYY-MM-DD"; nothing for anything else.
  static std::optional<long> dayNumberOf(const std::string& date);

 private:
  tavelabi::Resource addRule(tavelabi::ResourceAction& action);
  tavelabi::Resource editRule(tavelabi::ResourceAction& action);
  tavelabi::Resource deleteRule(tavelabi::ResourceAction& action);
  tavelabi::Resource activationsOfDay(tavelabi::ResourceAction& action);
  tavelabi::Resource summaryOfPeriod(tavelabi::ResourceAction& action);

  tavelabi::ResourceValue::Map rules() const;
  void storeRules(const tavelabi::ResourceValue::Map& rules);
  bool acceptable(const tavelabi::ResourceValue::Map& rule) const;
  // The hardware answers `status` once the delay has passed.
  void confirmLater(int status);

  std::mutex mutex_;  // guards the fields below; commands run on callers' threads
  std::chrono::milliseconds confirmDelay_{300};
  int hardwareStatus_ = 0;
  std::optional<int> pendingStatus_;
  std::chrono::steady_clock::time_point confirmAt_;
};

}  // namespace halvor::sim
