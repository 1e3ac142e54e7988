#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The controller's clock, time zone and NTP client under "/time": "/time/timezone", "/time/ntp",
// "/time/ntpServer" with "value" and "set_value", "/time/ntpSynchronized", the map of regions
// and zones "/time/tzmap", and the write-only "/time/dateAndTime". A write of "set_value" is
// checked: one the controller cannot take is refused with "errorMessage" in the answer (an
// unknown zone, a server name that is not one, a date that does not exist); one it takes becomes
// "value" at once. NTP reports itself synchronised two seconds after it was switched on.
class TimeModel : public Model {
 public:
  std::string name() const override { return "time"; }
  std::vector<Command> writeChecks() override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  // The zones of the map, by region: {region, {{zone, description}, ...}}.
  struct Zone {
    const char* name;
    const char* description;
  };
  struct Region {
    const char* name;
    std::vector<Zone> zones;
  };
  static const std::vector<Region>& regions();
  // Whether text is "year-month-day hour:minute:second" of a time that exists (numbers with or
  // without leading zeros).
  static bool isDateAndTime(const std::string& text);
  static bool isServerName(const std::string& text);

 private:
  tavelabi::Resource checkDateAndTime(tavelabi::ResourceAction& action);
  tavelabi::Resource checkTimezone(tavelabi::ResourceAction& action);
  tavelabi::Resource checkNtp(tavelabi::ResourceAction& action);
  tavelabi::Resource checkNtpServer(tavelabi::ResourceAction& action);
  void update(const std::string& path, const tavelabi::Resource& values);

  // When NTP was last switched on and is not yet synchronised; only tick() touches it after the
  // check set it, under the lock.
  std::mutex mutex_;
  bool synchronising_ = false;
  std::optional<tavelabi::TimePoint> since_;
};

}  // namespace halvor::sim
