#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "kelo/handlers/http/time/TimeSettingsHelper.h"

namespace halvor::kelo {
namespace {

// Sets the process's zone for one test and puts the old one back.
class ProcessZone {
 public:
  explicit ProcessZone(const char* zone) {
    if (const char* old = std::getenv("TZ")) old_ = old;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ProcessZone() {
    if (old_) {
      setenv("TZ", old_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  std::optional<std::string> old_;
};

// Central European time with its summer time, written out so that no zone files are needed.
constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(TimeSettingsHelperTest, EachNumberIsPrintedWithoutLeadingZeros) {
  ProcessZone zone("UTC0");
  // 2026-03-07 09:05:01 UTC
  EXPECT_EQ(TimeSettingsHelper::localTimeText(1772874301), "2026-3-7 9:5:1");
}

TEST(TimeSettingsHelperTest, TheProcesssZoneDecidesAcrossADaylightSavingChange) {
  ProcessZone zone(kCentralEurope);
  // 2026-03-29 00:59:59 UTC is the last second of winter time, 01:00:00 UTC the first of summer.
  EXPECT_EQ(TimeSettingsHelper::localTimeText(1774745999), "2026-3-29 1:59:59");
  EXPECT_EQ(TimeSettingsHelper::localTimeText(1774746000), "2026-3-29 3:0:0");
}

TEST(TimeSettingsHelperTest, TheClockMessageIsTheProcesssClockInWholeSeconds) {
  const std::time_t before = std::time(nullptr);
  const auto message = TimeSettingsHelper::generateDateAndTimeMessage(nullptr, nullptr, "");
  const std::time_t after = std::time(nullptr);
  EXPECT_GE(message->dateandtime().seconds(), before);
  EXPECT_LE(message->dateandtime().seconds(), after);
  EXPECT_EQ(message->dateandtime().nanos(), 0);
}

}  // namespace
}  // namespace halvor::kelo
