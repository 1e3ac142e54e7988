#include <gtest/gtest.h>
#include <json/value.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/SettingsModel.h"
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

class SettingsModelTest : public ::testing::Test {
 protected:
  SettingsModelTest() {
    ModelRegistry::install(host, {[] {
                             auto model = std::make_unique<SettingsModel>();
                             Json::Value section;
                             section["transitionMs"] = 1000;
                             section["failures"]["/settings/rf/frequency"] = "PLL did not lock";
                             model->applyFixture(section);
                             return std::unique_ptr<Model>(std::move(model));
                           }});
  }

  void write(const std::string& path, const ResourceValue& value) {
    ResourceAction action(CCRUD::Update, path, Resource("set_value", value), nullptr, "");
    host.processInternalAction(action);
  }

  Resource at(const std::string& path) { return *host.peek(path); }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(SettingsModelTest, FourPagesNameSettingsThatExistWithGuidsAndMonitors) {
  for (const auto& page : SettingsModel::pages()) {
    const Resource collection = at("/collection/" + page.name);
    const Resource link = at("/collection/" + page.name + "/link");
    EXPECT_TRUE(link.values.at("includeAsDynamicSetting").getBoolValue());
    EXPECT_EQ(link.values.at("collectionName").getStringValue(), page.name);
    EXPECT_EQ(host.listPaths("/collection/**/*").size(), SettingsModel::pages().size());
    const auto& settings = collection.values.at("settings").getListValue();
    EXPECT_FALSE(settings.empty()) << page.name;
    for (const ResourceValue& entry : settings) {
      const auto& keys = entry.getMapValue();
      const std::string path = keys.at("settingResource").getStringValue();
      ASSERT_TRUE(host.peek(path)) << path;
      EXPECT_TRUE(at(path).values.count("value")) << path;
      std::string guid = path.substr(1);
      std::replace(guid.begin(), guid.end(), '/', '-');
      EXPECT_EQ(at(path).values.at("guid").getStringValue(), guid);
      const std::string monitor = keys.at("monitorResource").getStringValue();
      if (!monitor.empty()) {
        EXPECT_TRUE(host.peek(monitor)) << monitor;
      }
      if (keys.at("type").getStringValue() == "SINGLE_SELECT") {
        EXPECT_TRUE(keys.count("options"));
      }
    }
  }
}

TEST_F(SettingsModelTest, AWrittenSettingTransitionsThenSettles) {
  const std::string power = "/settings/rf/outputPower";
  write(power, ResourceValue(1050));
  host.tickModels(TimePoint(10s));
  EXPECT_TRUE(at(power).values.at("transitioning").getBoolValue());
  EXPECT_EQ(at(power).values.at("progress").getIntValue(), 0);
  EXPECT_EQ(at(power).values.at("value").getIntValue(), 1000);
  host.tickModels(TimePoint(10s + 500ms));
  EXPECT_TRUE(at(power).values.at("transitioning").getBoolValue());
  EXPECT_EQ(at(power).values.at("progress").getIntValue(), 50);
  host.tickModels(TimePoint(11s));
  EXPECT_FALSE(at(power).values.at("transitioning").getBoolValue());
  EXPECT_EQ(at(power).values.at("progress").getIntValue(), 100);
  EXPECT_EQ(at(power).values.at("value").getIntValue(), 1050);
  EXPECT_FALSE(at(power).values.at("errorOccurred").getBoolValue());
  // Settled: further ticks leave it alone.
  host.tickModels(TimePoint(12s));
  EXPECT_FALSE(at(power).values.at("transitioning").getBoolValue());
}

TEST_F(SettingsModelTest, AFailingSettingKeepsItsValueAndReportsTheFixturesMessage) {
  const std::string frequency = "/settings/rf/frequency";
  write(frequency, ResourceValue(10000));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(11s));
  const Resource after = at(frequency);
  EXPECT_EQ(after.values.at("value").getIntValue(), 9850);
  EXPECT_EQ(after.values.at("set_value").getIntValue(), 9850);
  EXPECT_TRUE(after.values.at("errorOccurred").getBoolValue());
  EXPECT_EQ(after.values.at("errorMessage").getStringValue(), "PLL did not lock");
  EXPECT_FALSE(after.values.at("transitioning").getBoolValue());
  host.tickModels(TimePoint(12s));
  EXPECT_TRUE(at(frequency).values.at("errorOccurred").getBoolValue());
}

TEST_F(SettingsModelTest, ANewTargetRestartsTheTransition) {
  const std::string gain = "/settings/audio/inputGain";
  write(gain, ResourceValue(3.0));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(10s + 800ms));
  write(gain, ResourceValue(-3.0));
  host.tickModels(TimePoint(10s + 900ms));
  host.tickModels(TimePoint(11s + 100ms));
  EXPECT_TRUE(at(gain).values.at("transitioning").getBoolValue());
  EXPECT_DOUBLE_EQ(at(gain).values.at("value").getDoubleValue(), 0.0);
  host.tickModels(TimePoint(11s + 900ms));
  EXPECT_DOUBLE_EQ(at(gain).values.at("value").getDoubleValue(), -3.0);
}

TEST(SettingsModelFixtureTest, ABadSectionIsRefused) {
  SettingsModel model;
  Json::Value section;
  section["transitionMs"] = 0;
  EXPECT_THROW(model.applyFixture(section), std::invalid_argument);
  Json::Value failures;
  failures["failures"]["/x"] = 3;
  EXPECT_THROW(model.applyFixture(failures), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::sim
