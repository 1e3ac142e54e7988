#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/ws/WsPresetScheduleList.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

// The simulator's scheduler model seeds four rules.
class WsPresetScheduleListTest : public ::testing::Test {
 protected:
  WsPresetScheduleListTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    ScheduleHelperClass::setPresetList({});
  }

  protobuf::PresetScheduleList frame(std::size_t index) {
    protobuf::PresetScheduleList list;
    EXPECT_TRUE(list.ParseFromString(conn->sent().at(index).data));
    return list;
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsPresetScheduleList endpoint;
  std::string session = unitHost.openSession();
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsPresetScheduleListTest, TheRulesComeFirstThenAfterEachChangeReadAfresh) {
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  const auto first = frame(0);
  ASSERT_EQ(first.schedules_size(), 4);
  EXPECT_EQ(first.schedules(0).guid().value(), "1");
  // No list of rules was asked for: the preset is named by its guid alone.
  EXPECT_EQ(first.schedules(0).broadcastpreset().resources_size(), 0);
  EXPECT_EQ(unitHost.manager().getListeners().count("/scheduler/rules"), 1u);

  const Resource stored = *unitHost.host().peek("/scheduler/rules");
  ResourceValue::Map rules = stored.values.at("value").getMapValue();
  rules.erase("2");
  // The pushed resource is not used: the generator reads the rules again.
  unitHost.hostAction(CCRUD::Update, "/scheduler/rules", Resource(ResourceValue(rules)));
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(frame(1).schedules_size(), 3);
}

TEST_F(WsPresetScheduleListTest, OneRuleThatFailsFailsTheWholeMessage) {
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  const Resource stored = *unitHost.host().peek("/scheduler/rules");
  ResourceValue::Map rules = stored.values.at("value").getMapValue();
  ResourceValue::Map broken = rules.at("3").getMapValue();
  broken.erase("presetId");
  rules["3"] = ResourceValue(broken);
  unitHost.hostAction(CCRUD::Update, "/scheduler/rules", Resource(ResourceValue(rules)));
  EXPECT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(log.count(el::Level::Error, "Unable to push /scheduler/rules"), 1u);
}

}  // namespace
}  // namespace halvor::kelo::test
