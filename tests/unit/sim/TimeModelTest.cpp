#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/TimeModel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;
using namespace std::chrono_literals;

class TimeModelTest : public ::testing::Test {
 protected:
  TimeModelTest() {
    ModelRegistry::install(host, {[] { return std::unique_ptr<Model>(new TimeModel()); }});
  }

  Resource write(const std::string& path, const ResourceValue& value) {
    ResourceAction action(CCRUD::Update, path, Resource("set_value", value), nullptr, "");
    return host.processInternalAction(action);
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(TimeModelTest, DatesAndTimesMustExist) {
  EXPECT_TRUE(TimeModel::isDateAndTime("2026-3-7 9:5:1"));
  EXPECT_TRUE(TimeModel::isDateAndTime("2024-02-29 23:59:59"));
  EXPECT_FALSE(TimeModel::isDateAndTime("2026-2-29 0:0:0"));
  EXPECT_FALSE(TimeModel::isDateAndTime("2026-13-1 0:0:0"));
  EXPECT_FALSE(TimeModel::isDateAndTime("2026-1-1 24:0:0"));
  EXPECT_FALSE(TimeModel::isDateAndTime("2026-1-1 0:0:0 x"));
  EXPECT_FALSE(TimeModel::isDateAndTime(""));
}

TEST_F(TimeModelTest, ARefusedWriteAnswersItsErrorMessageAndStoresNothing) {
  const Resource answer = write("/time/timezone", ResourceValue("Mars/Olympus"));
  EXPECT_EQ(answer.values.at("errorMessage").getStringValue(), "Unknown time zone: Mars/Olympus");
  EXPECT_EQ(host.peek("/time/timezone")->values.at("set_value").getStringValue(), "Europe/Berlin");
  EXPECT_TRUE(
      write("/time/dateAndTime", ResourceValue("2026-2-30 1:2:3")).values.count("errorMessage"));
  EXPECT_TRUE(write("/time/ntpServer", ResourceValue("bad name")).values.count("errorMessage"));
  EXPECT_TRUE(write("/time/ntp", ResourceValue("on")).values.count("errorMessage"));
}

TEST_F(TimeModelTest, AnAcceptedWriteIsTheValueAtOnce) {
  const Resource answer = write("/time/timezone", ResourceValue("Asia/Tokyo"));
  EXPECT_FALSE(answer.values.count("errorMessage"));
  EXPECT_EQ(host.peek("/time/timezone")->values.at("value").getStringValue(), "Asia/Tokyo");
  EXPECT_FALSE(
      write("/time/dateAndTime", ResourceValue("2026-3-7 9:5:1")).values.count("errorMessage"));
}

TEST_F(TimeModelTest, NtpIsSynchronisedTwoSecondsAfterItWasSwitchedOn) {
  write("/time/ntp", ResourceValue(false));
  EXPECT_FALSE(host.peek("/time/ntpSynchronized")->values.at("value").getBoolValue());
  write("/time/ntp", ResourceValue(true));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(11s));
  EXPECT_FALSE(host.peek("/time/ntpSynchronized")->values.at("value").getBoolValue());
  host.tickModels(TimePoint(12s));
  EXPECT_TRUE(host.peek("/time/ntpSynchronized")->values.at("value").getBoolValue());
}

TEST_F(TimeModelTest, TheMapHoldsEveryRegionWithItsZones) {
  const Resource stored = *host.peek("/time/tzmap");
  const auto& map = stored.values.at("value").getMapValue();
  EXPECT_EQ(map.size(), TimeModel::regions().size());
  const auto& berlin = map.at("Europe").getMapValue().at("Europe/Berlin").getMapValue();
  EXPECT_EQ(berlin.at("timezone").getStringValue(), "Europe/Berlin");
}

}  // namespace
}  // namespace halvor::sim
