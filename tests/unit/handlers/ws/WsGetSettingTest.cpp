#include <gtest/gtest.h>

#include <memory>

#include "halvor/protobuf/Settings.pb.h"
#include "kelo/handlers/ws/WsGetSetting.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class WsGetSettingTest : public ::testing::Test {
 protected:
  WsGetSettingTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    Resource setting(ResourceValue(1000));
    setting.values["guid"] = ResourceValue("rf-power");
    setting.values["units"] = ResourceValue("W");
    unitHost.hostAction(CCRUD::Create, "/rf/power", setting);
  }

  protobuf::QuoSetting frame(std::size_t index) {
    protobuf::QuoSetting setting;
    EXPECT_TRUE(setting.ParseFromString(conn->sent().at(index).data));
    return setting;
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsGetSetting endpoint;
  std::string session = unitHost.openSession();
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsGetSettingTest, TheFirstFrameHoldsOnlyTheValueWithoutGuidLabelOrState) {
  endpoint.handleNewConnection(upgradeRequest("id=rf-power", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  const protobuf::QuoSetting setting = frame(0);
  const auto& resource = setting.settingresource().resource();
  ASSERT_EQ(resource.values().size(), 1u);
  EXPECT_EQ(resource.values().at("value").intvalue().value(), 1000);
  EXPECT_FALSE(resource.has_path());
  EXPECT_FALSE(setting.settingresource().has_validations());
  EXPECT_FALSE(setting.has_guid());
  EXPECT_FALSE(setting.has_label());
  EXPECT_FALSE(setting.has_transitioning());
  EXPECT_FALSE(setting.has_progress());
  EXPECT_FALSE(setting.has_erroroccurred());
  EXPECT_FALSE(setting.has_errormessage());
  EXPECT_EQ(unitHost.manager().getListeners().count("/rf/power"), 1u);
}

TEST_F(WsGetSettingTest, ASettingThatTransitionsIsPushedWithItsProgress) {
  endpoint.handleNewConnection(upgradeRequest("id=rf-power", "SessionID=" + session), conn);
  Resource moving;
  moving.values["set_value"] = ResourceValue(1200);
  moving.values["transitioning"] = ResourceValue(true);
  moving.values["progress"] = ResourceValue(30);
  unitHost.hostAction(CCRUD::Update, "/rf/power", moving);
  ASSERT_EQ(conn->sent().size(), 2u);
  const protobuf::QuoSetting pushed = frame(1);
  EXPECT_TRUE(pushed.transitioning().value());
  EXPECT_EQ(pushed.progress().value(), 30);
  EXPECT_EQ(pushed.settingresource().resource().values().at("value").intvalue().value(), 1000);

  Resource settled;
  settled.values["value"] = ResourceValue(1200);
  settled.values["transitioning"] = ResourceValue(false);
  unitHost.hostAction(CCRUD::Update, "/rf/power", settled);
  ASSERT_EQ(conn->sent().size(), 3u);
  const protobuf::QuoSetting done = frame(2);
  EXPECT_TRUE(done.has_transitioning());
  EXPECT_FALSE(done.transitioning().value());
  // Progress shows only while the setting moves.
  EXPECT_FALSE(done.has_progress());
  EXPECT_EQ(done.settingresource().resource().values().at("value").intvalue().value(), 1200);
}

TEST_F(WsGetSettingTest, AnErrorMessageShowsOnlyWithAnError) {
  Resource failed;
  failed.values["errorOccurred"] = ResourceValue(true);
  failed.values["errorMessage"] = ResourceValue("PLL did not lock");
  unitHost.hostAction(CCRUD::Update, "/rf/power", failed);
  endpoint.handleNewConnection(upgradeRequest("id=rf-power", "SessionID=" + session), conn);
  EXPECT_EQ(frame(0).errormessage().value(), "PLL did not lock");
  Resource cleared;
  cleared.values["errorOccurred"] = ResourceValue(false);
  unitHost.hostAction(CCRUD::Update, "/rf/power", cleared);
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_FALSE(frame(1).erroroccurred().value());
  EXPECT_FALSE(frame(1).has_errormessage());
}

TEST_F(WsGetSettingTest, WithoutIdNothingIsSentOrSubscribed) {
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Request missing query parameter: id."), 1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsGetSettingTest, ASettingWithoutValueSendsNothing) {
  unitHost.hostAction(CCRUD::Create, "/rf/bare", Resource("units", ResourceValue("W")));
  endpoint.handleNewConnection(upgradeRequest("id=rf-bare", "SessionID=" + session), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Setting resource has no value entry"), 1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsGetSettingTest, ADeadSessionClosesWith1011) {
  endpoint.handleNewConnection(upgradeRequest("id=rf-power&SessionID=dead"), conn);
  EXPECT_TRUE(conn->sent().empty());
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1011);
}

}  // namespace
}  // namespace halvor::kelo::test
