#include <gtest/gtest.h>

#include <memory>

#include "halvor/protobuf/Processor.pb.h"
#include "kelo/handlers/ws/WsGetOrbanActivePreset.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource preset(const std::string& name, bool factory) {
  Resource resource("name", ResourceValue(name));
  for (const char* key : {"isFactory", "isModifiable", "isLessMoreAvailable", "isMultiband"}) {
    resource.values[key] = ResourceValue(factory);
  }
  for (const char* key : {"isUser", "isLessMoreUnvailable", "isLowLatency", "isTwoband"}) {
    resource.values[key] = ResourceValue(!factory);
  }
  return resource;
}

class WsGetOrbanActivePresetTest : public ::testing::Test {
 protected:
  WsGetOrbanActivePresetTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    unitHost.hostAction(CCRUD::Create, "/orban/activePreset/name", preset("Balanced", true));
  }

  protobuf::OrbanPresetName frame(std::size_t index) {
    protobuf::OrbanPresetName message;
    EXPECT_TRUE(message.ParseFromString(conn->sent().at(index).data));
    return message;
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsGetOrbanActivePreset endpoint;
  std::string session = unitHost.openSession();
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsGetOrbanActivePresetTest, TheFirstFrameIsTheActivePresetAndThePathIsSubscribed) {
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  const protobuf::OrbanPresetName first = frame(0);
  EXPECT_EQ(first.name().value(), "Balanced");
  EXPECT_TRUE(first.isfactory().value());
  EXPECT_TRUE(first.has_isuser());
  EXPECT_FALSE(first.isuser().value());
  EXPECT_TRUE(first.islessmoreavailable().value());
  EXPECT_FALSE(first.islessmoreunvailable().value());
  EXPECT_EQ(unitHost.manager().getListeners().count("/orban/activePreset/name"), 1u);
}

TEST_F(WsGetOrbanActivePresetTest, EachChangeOfTheActivePresetIsPushed) {
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  // A new preset asked for: the processor still runs the old one.
  unitHost.hostAction(CCRUD::Update, "/orban/activePreset/name",
                      Resource("set_value", ResourceValue("Night")));
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(frame(1).name().value(), "Balanced");
  // Taken.
  unitHost.hostAction(CCRUD::Update, "/orban/activePreset/name", preset("Night", false));
  ASSERT_EQ(conn->sent().size(), 3u);
  EXPECT_EQ(frame(2).name().value(), "Night");
  EXPECT_TRUE(frame(2).isuser().value());
  EXPECT_TRUE(frame(2).istwoband().value());
}

TEST_F(WsGetOrbanActivePresetTest, AnActivePresetWithoutAKeySendsNothingAndSubscribesNothing) {
  Resource broken = preset("Balanced", true);
  broken.values.erase("isTwoband");
  unitHost.hostAction(CCRUD::Create, "/orban/activePreset/name", broken);
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error, "map::at"), 1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsGetOrbanActivePresetTest, ADeadSessionClosesWith1011) {
  endpoint.handleNewConnection(upgradeRequest("SessionID=dead"), conn);
  EXPECT_TRUE(conn->sent().empty());
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1011);
}

}  // namespace
}  // namespace halvor::kelo::test
