#include <gtest/gtest.h>
#include <json/value.h>

#include <stdexcept>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/PresetModel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

class PresetModelTest : public ::testing::Test {
 protected:
  PresetModelTest() {
    ModelRegistry::install(host, {[] {
                             auto model = std::make_unique<PresetModel>();
                             Json::Value section;
                             section["pollsToComplete"] = 2;
                             section["failAtStart"].append("7");
                             section["failWhilePolling"].append("8");
                             model->applyFixture(section);
                             return std::unique_ptr<Model>(std::move(model));
                           }});
  }

  Resource command(const std::string& path, const Resource& resource,
                   const std::string& session = "s1") {
    ResourceAction action(CCRUD::Command, path, resource, nullptr, session);
    return host.processInternalAction(action);
  }

  // The first command, then polls until an answer ends the action; the number of polls.
  Resource carryOut(const std::string& path, const Resource& start, int* polls = nullptr) {
    Resource answer = command(path, start);
    int count = 0;
    while (answer.values.count("actionCompleted") == 0 &&
           answer.values.count("errorOccurred") == 0) {
      answer = command(path, Resource("checkProgress", true));
      ++count;
    }
    if (polls != nullptr) *polls = count;
    return answer;
  }

  std::size_t listed() {
    return host.peek("/presets/list")->values.at("value").getListValue().size();
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(PresetModelTest, TwelvePresetsWithTheirSectionsAreSeeded) {
  EXPECT_EQ(listed(), 12u);
  const auto presets = PresetModel::demoPresets();
  ASSERT_EQ(presets.size(), 12u);
  for (const auto& [guid, sections] : presets) {
    for (const char* name : {"presetName", "frequency", "power", "mode", "audio", "rds"}) {
      EXPECT_EQ(sections.count(name), 1u) << guid << " " << name;
    }
  }
  EXPECT_EQ(host.peek("/presets/active/details")->values.at("guid").getStringValue(), "1");
  EXPECT_EQ(command("/presets/generateList", Resource()).values.at("value").getListValue().size(),
            12u);
}

TEST_F(PresetModelTest, ALoadCompletesAfterTheConfiguredPollsWithThePreset) {
  int polls = 0;
  const Resource answer = carryOut("/presets/load", Resource("guid", ResourceValue("3")), &polls);
  EXPECT_EQ(polls, 3);  // two unfinished, then the finished one
  EXPECT_EQ(answer.values.at("guid").getStringValue(), "3");
  EXPECT_EQ(answer.values.at("value")
                .getMapValue()
                .at("presetName")
                .getMapValue()
                .at("value")
                .getStringValue(),
            "Night low power");
}

TEST_F(PresetModelTest, CreateUpdateActivateAndDeleteChangeThePresets) {
  const Resource created = carryOut("/presets/create", Resource("guid", ResourceValue("2")));
  const std::string guid = created.values.at("guid").getStringValue();
  EXPECT_EQ(guid, "13");
  EXPECT_EQ(listed(), 13u);

  Resource update("guid", ResourceValue(guid));
  update.values["value"] = ResourceValue(
      ResourceValue::Map{{"power", ResourceValue(ResourceValue::Map{{"value", 200.0}})}});
  const Resource updated = carryOut("/presets/update", update);
  EXPECT_EQ(updated.values.at("value")
                .getMapValue()
                .at("power")
                .getMapValue()
                .at("value")
                .getDoubleValue(),
            200.0);

  carryOut("/presets/active/change", Resource("guid", ResourceValue(guid)));
  EXPECT_EQ(host.peek("/presets/active/details")->values.at("guid").getStringValue(), guid);

  const Resource deleted = carryOut("/presets/delete", Resource("guid", ResourceValue(guid)));
  EXPECT_EQ(deleted.values.count("actionCompleted"), 1u);
  EXPECT_EQ(listed(), 12u);
}

TEST_F(PresetModelTest, FixtureGuidsFailAtTheStartOrWhilePolledAndUnknownGuidsFail) {
  Resource refused = command("/presets/load", Resource("guid", ResourceValue("7")));
  EXPECT_EQ(refused.values.count("errorOccurred"), 1u);
  const Resource failed = carryOut("/presets/load", Resource("guid", ResourceValue("8")));
  EXPECT_EQ(failed.values.at("errorMessage").getStringValue(),
            "The hardware did not finish the load of preset 8");
  const auto errors = host.peek("/presets/hardwareErrors")->values.at("value").getListValue();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].getStringValue(), "The hardware did not finish the load of preset 8");
  EXPECT_EQ(command("/presets/load", Resource("guid", ResourceValue("99")))
                .values.at("errorMessage")
                .getStringValue(),
            "No preset with guid 99");
  EXPECT_EQ(command("/presets/load", Resource("checkProgress", true), "other-session")
                .values.count("errorOccurred"),
            1u);
}

TEST_F(PresetModelTest, ABadFixtureSectionIsRefused) {
  PresetModel model;
  Json::Value negative;
  negative["pollsToComplete"] = -1;
  EXPECT_THROW(model.applyFixture(negative), std::invalid_argument);
  Json::Value notList;
  notList["failAtStart"] = "7";
  EXPECT_THROW(model.applyFixture(notList), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::sim
