#include <gtest/gtest.h>
#include <json/value.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/ProcessorModel.h"
#include "tavelabi/Exceptions.h"
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

class ProcessorModelTest : public ::testing::Test {
 protected:
  void install(Json::Value section = Json::objectValue) {
    if (!section.isMember("applyDelayMs")) section["applyDelayMs"] = 500;
    if (!section.isMember("updatedDelayMs")) section["updatedDelayMs"] = 300;
    auto model = std::make_unique<ProcessorModel>();
    model->applyFixture(section);
    host.installModel(std::move(model));
  }

  Resource run(CCRUD verb, const std::string& path, const Resource& resource = Resource()) {
    ResourceAction action(verb, path, resource, nullptr, "");
    return host.processInternalAction(action);
  }

  std::vector<std::string> names() {
    std::vector<std::string> result;
    const Resource list = *host.peek("/orban/presetList");
    for (const auto& entry : list.values.at("value").getListValue()) {
      result.push_back(entry.getStringValue());
    }
    return result;
  }

  std::string activeName() {
    return host.peek("/orban/activePreset/name")->values.at("name").getStringValue();
  }

  bool updated() {
    return host.peek("/orban/activePreset/updated")->values.at("value").getBoolValue();
  }

  Resource savedPreset(const std::string& name) {
    ResourceValue::Map fields{{"name", ResourceValue(name)}, {"isLowLatency", ResourceValue(true)}};
    return Resource(ResourceValue(fields));
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(ProcessorModelTest, FactoryAndUserPresetsAreSeededWithEveryKey) {
  install();
  const std::vector<std::string> listed = names();
  ASSERT_EQ(listed.size(), ProcessorModel::demoPresets().size());
  int factory = 0;
  for (const std::string& name : listed) {
    const Resource preset = *host.peek("/orban/presetList/" + name);
    EXPECT_EQ(preset.values.size(), 9u) << name;
    EXPECT_NE(preset.values.at("isUser").getBoolValue(),
              preset.values.at("isFactory").getBoolValue());
    EXPECT_NE(preset.values.at("isLessMoreAvailable").getBoolValue(),
              preset.values.at("isLessMoreUnvailable").getBoolValue());
    if (preset.values.at("isFactory").getBoolValue()) ++factory;
  }
  EXPECT_GT(factory, 0);
  EXPECT_LT(factory, static_cast<int>(listed.size()));
  EXPECT_EQ(activeName(), listed.front());
  EXPECT_TRUE(updated());
  EXPECT_EQ(host.peek("/orban/activePreset/controls/Bass")->values.at("value").getIntValue(), 0);
}

TEST_F(ProcessorModelTest, ASavedPresetIsListedAsAUserPresetAfterTheDelay) {
  install();
  run(CCRUD::Command, "/orban/preset/save", savedPreset("Drive"));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(10s + 400ms));
  EXPECT_FALSE(host.peek("/orban/presetList/Drive"));
  host.tickModels(TimePoint(10s + 500ms));
  EXPECT_EQ(names().back(), "Drive");
  const Resource preset = *host.peek("/orban/presetList/Drive");
  EXPECT_EQ(preset.values.size(), 9u);
  EXPECT_TRUE(preset.values.at("isUser").getBoolValue());
  EXPECT_FALSE(preset.values.at("isFactory").getBoolValue());
  EXPECT_TRUE(preset.values.at("isLowLatency").getBoolValue());
}

TEST_F(ProcessorModelTest, SavingAnExistingUserPresetKeepsTheListAsItIs) {
  install();
  const std::vector<std::string> before = names();
  ResourceValue::Map fields{{"name", ResourceValue("Night Jazz")},
                            {"isTwoband", ResourceValue(false)}};
  run(CCRUD::Command, "/orban/preset/save", Resource(ResourceValue(fields)));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(11s));
  EXPECT_EQ(names(), before);
  EXPECT_FALSE(host.peek("/orban/presetList/Night Jazz")->values.at("isTwoband").getBoolValue());
}

TEST_F(ProcessorModelTest, ABadPresetOrAFactoryPresetIsRefusedAtOnce) {
  install();
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/save", Resource()), std::invalid_argument);
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/save", savedPreset("")), std::invalid_argument);
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/save", savedPreset("a/b")),
               std::invalid_argument);
  ResourceValue::Map odd{{"name", ResourceValue("Odd")}, {"isUser", ResourceValue("yes")}};
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/save", Resource(ResourceValue(odd))),
               std::invalid_argument);
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/save", savedPreset("Factory Balanced")),
               std::invalid_argument);
}

TEST_F(ProcessorModelTest, AUserPresetIsDeletedAfterTheDelay) {
  install();
  run(CCRUD::Command, "/orban/preset/delete", Resource(ResourceValue("Night Jazz")));
  host.tickModels(TimePoint(10s));
  EXPECT_TRUE(host.peek("/orban/presetList/Night Jazz"));
  host.tickModels(TimePoint(10s + 500ms));
  EXPECT_FALSE(host.peek("/orban/presetList/Night Jazz"));
  for (const std::string& name : names()) EXPECT_NE(name, "Night Jazz");
}

TEST_F(ProcessorModelTest, AFactoryPresetOrTheActiveOneIsKeptAfterADelete) {
  install();
  const std::vector<std::string> before = names();
  run(CCRUD::Command, "/orban/preset/delete", Resource(ResourceValue("Factory Speech")));
  run(CCRUD::Command, "/orban/preset/delete", Resource(ResourceValue(activeName())));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(12s));
  EXPECT_EQ(names(), before);
}

TEST_F(ProcessorModelTest, AnUnknownPresetCannotBeDeleted) {
  install();
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/delete", Resource(ResourceValue("Nowhere"))),
               tavelabi::NonExistentResourcePathException);
  EXPECT_THROW(run(CCRUD::Command, "/orban/preset/delete", Resource(ResourceValue(3))),
               std::invalid_argument);
}

TEST_F(ProcessorModelTest, AFailingDeleteOrSaveIsAcceptedAndNeverApplied) {
  Json::Value section;
  section["failing"].append("delete");
  section["failing"].append("save");
  install(section);
  const std::vector<std::string> before = names();
  run(CCRUD::Command, "/orban/preset/delete", Resource(ResourceValue("Night Jazz")));
  run(CCRUD::Command, "/orban/preset/save", savedPreset("Drive"));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(20s));
  EXPECT_EQ(names(), before);
  EXPECT_FALSE(host.peek("/orban/presetList/Drive"));
}

TEST_F(ProcessorModelTest, AnActivationClearsUpdatedNamesThePresetThenSetsUpdatedAgain) {
  install();
  run(CCRUD::Update, "/orban/activePreset/name",
      Resource("set_value", ResourceValue("Night Jazz")));
  host.tickModels(TimePoint(10s));
  EXPECT_FALSE(updated());
  EXPECT_EQ(activeName(), "Factory Balanced");
  host.tickModels(TimePoint(10s + 499ms));
  EXPECT_EQ(activeName(), "Factory Balanced");
  host.tickModels(TimePoint(10s + 500ms));
  EXPECT_EQ(activeName(), "Night Jazz");
  EXPECT_TRUE(host.peek("/orban/activePreset/name")->values.at("isUser").getBoolValue());
  EXPECT_FALSE(updated());
  host.tickModels(TimePoint(10s + 800ms));
  EXPECT_TRUE(updated());
}

TEST_F(ProcessorModelTest, ALaterAskedForPresetReplacesAnActivationUnderWay) {
  install();
  run(CCRUD::Update, "/orban/activePreset/name",
      Resource("set_value", ResourceValue("Night Jazz")));
  host.tickModels(TimePoint(10s));
  run(CCRUD::Update, "/orban/activePreset/name",
      Resource("set_value", ResourceValue("Morning Show")));
  host.tickModels(TimePoint(10s + 200ms));
  host.tickModels(TimePoint(10s + 600ms));
  EXPECT_EQ(activeName(), "Factory Balanced");
  host.tickModels(TimePoint(10s + 700ms));
  EXPECT_EQ(activeName(), "Morning Show");
  host.tickModels(TimePoint(11s));
  EXPECT_TRUE(updated());
}

TEST_F(ProcessorModelTest, AnUnknownPresetIsRefusedByPuttingTheActiveNameBack) {
  install();
  run(CCRUD::Update, "/orban/activePreset/name", Resource("set_value", ResourceValue("Nowhere")));
  host.tickModels(TimePoint(10s));
  const Resource active = *host.peek("/orban/activePreset/name");
  EXPECT_EQ(active.values.at("set_value").getStringValue(), "Factory Balanced");
  EXPECT_EQ(active.values.at("name").getStringValue(), "Factory Balanced");
  EXPECT_TRUE(updated());
}

TEST_F(ProcessorModelTest, WithUpdatedFailingTheFlagStaysFalseAfterTheActivation) {
  Json::Value section;
  section["failing"].append("updated");
  install(section);
  run(CCRUD::Update, "/orban/activePreset/name",
      Resource("set_value", ResourceValue("Night Jazz")));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(11s));
  host.tickModels(TimePoint(12s));
  EXPECT_EQ(activeName(), "Night Jazz");
  EXPECT_FALSE(updated());
}

TEST_F(ProcessorModelTest, AControlFollowsWithinItsLimitsAfterTheDelay) {
  install();
  const std::string bass = "/orban/activePreset/controls/Bass";
  run(CCRUD::Update, bass, Resource("set_value", ResourceValue(4)));
  host.tickModels(TimePoint(10s));
  EXPECT_EQ(host.peek(bass)->values.at("value").getIntValue(), 0);
  host.tickModels(TimePoint(10s + 500ms));
  EXPECT_EQ(host.peek(bass)->values.at("value").getIntValue(), 4);
  // Beyond the limit the control stops at it, short of what was asked.
  run(CCRUD::Update, bass, Resource("set_value", ResourceValue(40)));
  host.tickModels(TimePoint(20s));
  host.tickModels(TimePoint(21s));
  EXPECT_EQ(host.peek(bass)->values.at("value").getIntValue(), 10);
  host.tickModels(TimePoint(30s));
  EXPECT_EQ(host.peek(bass)->values.at("value").getIntValue(), 10);
}

TEST_F(ProcessorModelTest, AFailingControlNeverFollows) {
  Json::Value section;
  section["failing"].append("control");
  install(section);
  const std::string bass = "/orban/activePreset/controls/Bass";
  run(CCRUD::Update, bass, Resource("set_value", ResourceValue(4)));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(20s));
  EXPECT_EQ(host.peek(bass)->values.at("value").getIntValue(), 0);
}

TEST_F(ProcessorModelTest, ASectionOfAnotherFormIsRefused) {
  ProcessorModel model;
  EXPECT_THROW(model.applyFixture(Json::Value(3)), std::invalid_argument);
  Json::Value negative;
  negative["applyDelayMs"] = -1;
  EXPECT_THROW(model.applyFixture(negative), std::invalid_argument);
  Json::Value unknown;
  unknown["failing"].append("activate");
  EXPECT_THROW(model.applyFixture(unknown), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::sim
