#include <gtest/gtest.h>
#include <json/value.h>

#include <chrono>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/SnmpModel.h"
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

class SnmpModelTest : public ::testing::Test {
 protected:
  SnmpModelTest() {
    ModelRegistry::install(host, {[] {
                             auto model = std::make_unique<SnmpModel>();
                             Json::Value section;
                             section["applyDelayMs"] = 500;
                             model->applyFixture(section);
                             return std::unique_ptr<Model>(std::move(model));
                           }});
  }

  Resource run(CCRUD verb, const std::string& path, const Resource& resource) {
    ResourceAction action(verb, path, resource, nullptr, "");
    return host.processInternalAction(action);
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(SnmpModelTest, EveryFollowedResourceStartsConfirmed) {
  for (const std::string& path : SnmpModel::followedPaths()) {
    const Resource stored = *host.peek(path);
    EXPECT_TRUE(stored.values.at("value") == stored.values.at("set_value")) << path;
  }
  EXPECT_TRUE(host.peek("/snmp/trapSettings/trap-1"));
}

TEST_F(SnmpModelTest, ValueFollowsSetValueAfterTheDelay) {
  run(CCRUD::Update, "/snmp/agentPort", Resource("set_value", ResourceValue(1161)));
  host.tickModels(TimePoint(10s));
  host.tickModels(TimePoint(10s + 400ms));
  EXPECT_EQ(host.peek("/snmp/agentPort")->values.at("value").getIntValue(), 161);
  host.tickModels(TimePoint(10s + 500ms));
  EXPECT_EQ(host.peek("/snmp/agentPort")->values.at("value").getIntValue(), 1161);
}

TEST_F(SnmpModelTest, ReceiversAreAddedAndDeletedByCommand) {
  Resource body("trapReceiver", ResourceValue("10.0.0.9"));
  const Resource answer = run(CCRUD::Command, "/snmp/command/newTrapSetting", body);
  const std::string guid = answer.values.at("guid").getStringValue();
  const Resource list = *host.peek("/snmp/trapSettings/list");
  EXPECT_EQ(list.values.at("previouslyAdded").getStringValue(), guid);
  EXPECT_EQ(list.values.at("value").getListValue().size(), 2u);
  EXPECT_EQ(host.peek("/snmp/trapSettings/" + guid)->values.at("trapReceiver").getStringValue(),
            "10.0.0.9");
  run(CCRUD::Command, "/snmp/command/deleteTrapSetting", Resource("guid", ResourceValue(guid)));
  EXPECT_FALSE(host.peek("/snmp/trapSettings/" + guid));
  EXPECT_EQ(host.peek("/snmp/trapSettings/list")->values.at("value").getListValue().size(), 1u);
}

}  // namespace
}  // namespace halvor::sim
