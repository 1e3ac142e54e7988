#include <gtest/gtest.h>
#include <json/value.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/RemoteIoModel.h"
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

class RemoteIoModelTest : public ::testing::Test {
 protected:
  RemoteIoModelTest() {
    ModelRegistry::install(host, {[] {
                             auto model = std::make_unique<RemoteIoModel>();
                             Json::Value section;
                             section["settleDelayMs"] = 500;
                             model->applyFixture(section);
                             return std::unique_ptr<Model>(std::move(model));
                           }});
  }

  Resource run(CCRUD verb, const std::string& path, const Resource& resource) {
    ResourceAction action(verb, path, resource, nullptr, "");
    return host.processInternalAction(action);
  }

  bool transitioning(const std::string& path) {
    return host.peek(path)->values.at("transitioning").getBoolValue();
  }

  static Resource ruleWrite(const std::string& guid, const std::string& channel) {
    Resource rule;
    rule.values["guid"] = ResourceValue(guid);
    rule.values["value"] = ResourceValue("RF off");
    rule.values["set_value"] = ResourceValue(channel);
    rule.values["label"] = ResourceValue("High");
    rule.values["polarityMask"] = ResourceValue("2");
    rule.values["level"] = ResourceValue(true);
    return rule;
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(RemoteIoModelTest, RuleGuidsAreTheWordAndTheNumberOfTheirPath) {
  EXPECT_EQ(RemoteIoModel::rulePathOf("input3"), "input/3");
  EXPECT_EQ(RemoteIoModel::rulePathOf("output12"), "output/12");
  EXPECT_FALSE(RemoteIoModel::rulePathOf("input"));
  EXPECT_FALSE(RemoteIoModel::rulePathOf("inputx"));
  EXPECT_FALSE(RemoteIoModel::rulePathOf(""));
  EXPECT_EQ(host.peek("/remoteio/input/3")->values.at("guid").getStringValue(), "input3");
}

TEST_F(RemoteIoModelTest, ARuleSaveTransitionsThenSettlesWithNumbers) {
  const Resource answer = run(CCRUD::Command, "/remoteio/update", ruleWrite("input2", "9"));
  EXPECT_EQ(answer.values.at("guid").getStringValue(), "input/2");
  EXPECT_TRUE(transitioning("/remoteio/input/2"));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(10s + 400ms));
  EXPECT_TRUE(transitioning("/remoteio/input/2"));
  host.tickModels(TimePoint(10s + 500ms));
  const Resource settled = *host.peek("/remoteio/input/2");
  EXPECT_FALSE(settled.values.at("transitioning").getBoolValue());
  EXPECT_EQ(settled.values.at("set_value").getIntValue(), 9);
  EXPECT_EQ(settled.values.at("polarityMask").getIntValue(), 2);
  EXPECT_EQ(settled.values.at("value").getStringValue(), "RF off");
}

TEST_F(RemoteIoModelTest, UnknownGuidsAndNumbersThatAreNotNumbersAreRefused) {
  EXPECT_THROW(run(CCRUD::Command, "/remoteio/update", ruleWrite("", "1")),
               tavelabi::NonExistentResourcePathException);
  EXPECT_THROW(run(CCRUD::Command, "/remoteio/update", ruleWrite("input99", "1")),
               tavelabi::NonExistentResourcePathException);
  EXPECT_THROW(run(CCRUD::Command, "/remoteio/update", ruleWrite("input1", "1x")),
               std::invalid_argument);
  EXPECT_FALSE(transitioning("/remoteio/input/1"));
}

TEST_F(RemoteIoModelTest, ASiteControlIsCreatedListedAndDeletedAfterTheDelay) {
  Resource control;
  control.values["name"] = ResourceValue("Fans");
  control.values["latch"] = ResourceValue(true);
  control.values["state"] = ResourceValue(true);
  const std::string guid = run(CCRUD::Command, "/remoteio/siteControl/create", control)
                               .values.at("guid")
                               .getStringValue();
  const std::string path = "/remoteio/siteControl/" + guid;
  EXPECT_TRUE(transitioning(path));
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(2s));
  EXPECT_FALSE(transitioning(path));
  EXPECT_EQ(host.peek("/remoteio/siteControl/list")->values.at("value").getListValue().size(), 3u);
  run(CCRUD::Command, "/remoteio/siteControl/resetLatched", Resource());
  EXPECT_FALSE(host.peek(path)->values.at("state").getBoolValue());
  run(CCRUD::Command, "/remoteio/siteControl/delete", Resource("guid", ResourceValue(guid)));
  EXPECT_TRUE(transitioning(path));
  host.tickModels(TimePoint(3s));
  host.tickModels(TimePoint(4s));
  EXPECT_FALSE(host.peek(path));
  EXPECT_EQ(host.peek("/remoteio/siteControl/list")->values.at("value").getListValue().size(), 2u);
}

TEST_F(RemoteIoModelTest, AnAnalogOutputBeyondItsMaximumIsRefused) {
  Resource write;
  write.values["guid"] = ResourceValue("ao1");
  write.values["label"] = ResourceValue("Power");
  write.values["set_value"] = ResourceValue(1001);
  EXPECT_THROW(run(CCRUD::Command, "/remoteio/analog/update", write), std::out_of_range);
  write.values["set_value"] = ResourceValue(1000);
  run(CCRUD::Command, "/remoteio/analog/update", write);
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(2s));
  EXPECT_EQ(host.peek("/remoteio/analog/ao1")->values.at("value").getIntValue(), 1000);
}

TEST_F(RemoteIoModelTest, ASettleDelayThatIsNotAWholeNumberIsRefused) {
  RemoteIoModel model;
  Json::Value section;
  section["settleDelayMs"] = "soon";
  EXPECT_THROW(model.applyFixture(section), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::sim
