#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/handlers/ws/WsMeterGroup.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

constexpr const char* kGroup = "/meters/amplifiers/amplifier1";

Resource meter(const std::string& path, double reading) {
  Resource resource{ResourceValue(reading)};
  resource.values["path"] = ResourceValue(path);
  resource.values["units"] = ResourceValue(std::string("V"));
  resource.values["deviceName"] = ResourceValue(std::string("amplifier"));
  resource.values["deviceId"] = ResourceValue(std::string("1"));
  return resource;
}

protobuf::Meter parsed(const std::string& frame) {
  protobuf::Meter message;
  if (!message.ParseFromString(frame)) throw std::runtime_error("not a Meter frame");
  return message;
}

class WsMeterGroupTest : public ::testing::Test {
 protected:
  WsMeterGroupTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    for (const std::string& path :
         {std::string(kGroup) + "/outputPower", std::string(kGroup) + "/module1/pa/voltage",
          std::string("/meters/amplifiers/amplifier10/outputPower")}) {
      unitHost.hostAction(CCRUD::Create, path, meter(path, 1.0));
    }
  }

  void connect(const std::string& query, const std::string& sessionId) {
    endpoint.handleNewConnection(upgradeRequest(query, "SessionID=" + sessionId), conn);
  }
  void change(const std::string& path, double reading) {
    unitHost.hostAction(CCRUD::Update, path, Resource(ResourceValue(reading)));
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsMeterGroup endpoint;
  std::string session = unitHost.openSession();
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsMeterGroupTest, TheFirstFrameIsAnEmptyBinaryFrameAndTheGroupIsSubscribedBelowItsPath) {
  connect("path=%2Fmeters%2Famplifiers%2Famplifier1", session);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].data, "");
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  EXPECT_EQ(unitHost.manager().getListeners().count(std::string(kGroup) + "/**"), 1u);
  EXPECT_TRUE(conn->shutdownCalls().empty());
}

TEST_F(WsMeterGroupTest, EveryChangeBelowTheGroupHoweverDeepIsOneMeter) {
  connect(std::string("path=") + kGroup, session);
  change(std::string(kGroup) + "/outputPower", 1250.5);
  change(std::string(kGroup) + "/module1/pa/voltage", 47.75);
  const auto frames = conn->sent();
  ASSERT_EQ(frames.size(), 3u);

  const protobuf::Meter power = parsed(frames[1].data);
  EXPECT_EQ(frames[1].type, web::WebSocketMessageType::Binary);
  EXPECT_EQ(power.path().value(), std::string(kGroup) + "/outputPower");
  EXPECT_EQ(power.value().values().at("value").doublevalue().value(), 1250.5);
  EXPECT_EQ(power.units().value(), "V");
  EXPECT_EQ(power.device().guid().value(), "amplifier1");
  EXPECT_EQ(power.device().name().value(), "amplifier");

  const protobuf::Meter voltage = parsed(frames[2].data);
  EXPECT_EQ(voltage.path().value(), std::string(kGroup) + "/module1/pa/voltage");
  EXPECT_EQ(voltage.value().values().at("value").doublevalue().value(), 47.75);
}

TEST_F(WsMeterGroupTest, ClientsOfTheGroupShareOneRenderingOfEachChange) {
  static_assert(messageFromResourceOnly<WsMeterGroup>());
  connect(std::string("path=") + kGroup, session);
  auto second = std::make_shared<FakeConnection>("127.0.0.1", 40002);
  endpoint.handleNewConnection(
      upgradeRequest(std::string("path=") + kGroup, "SessionID=" + session), second);
  change(std::string(kGroup) + "/outputPower", 99.5);
  ASSERT_EQ(conn->sharedBuffers().size(), 1u);
  ASSERT_EQ(second->sharedBuffers().size(), 1u);
  EXPECT_EQ(conn->sharedBuffers()[0], second->sharedBuffers()[0]);
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(conn->sent()[1].data, second->sent()[1].data);
  EXPECT_EQ(parsed(conn->sent()[1].data).value().values().at("value").doublevalue().value(), 99.5);
}

TEST_F(WsMeterGroupTest, ChangesOutsideTheGroupAreNotSent) {
  connect(std::string("path=") + kGroup, session);
  // A sibling whose name starts with the group's name is another group.
  change("/meters/amplifiers/amplifier10/outputPower", 3.0);
  unitHost.hostAction(CCRUD::Update, kGroup, Resource("label", ResourceValue(std::string("A1"))));
  EXPECT_EQ(conn->sent().size(), 1u);
}

TEST_F(WsMeterGroupTest, AMissingOrEmptyPathIsLoggedWithoutFrameOrSubscription) {
  for (const std::string& query : {std::string(), std::string("path=")}) {
    log.clear();
    connect(query, session);
    EXPECT_TRUE(conn->sent().empty());
    EXPECT_TRUE(conn->shutdownCalls().empty());
    EXPECT_EQ(log.count(el::Level::Error, "Error sending initial message: "), 1u);
    EXPECT_EQ(log.count(el::Level::Error, "Request missing query parameter: path."), 1u);
    EXPECT_TRUE(unitHost.manager().getListeners().empty());
  }
}

TEST_F(WsMeterGroupTest, AnUnknownSessionIsNotRefusedAtConnect) {
  connect(std::string("path=") + kGroup, "not-a-session");
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].data, "");
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_EQ(unitHost.manager().getListeners().count(std::string(kGroup) + "/**"), 1u);
}

TEST_F(WsMeterGroupTest, TheGeneratorConvertsACopyWithoutAskingTheHost) {
  Resource resource = meter("/m/x", 2.5);
  std::string message;
  // A session the host does not know: the generator makes no host call that could refuse it.
  WsMeterGroup::messageGenerator(upgradeRequest(), resource, "dead", message, "/m/x");
  const protobuf::Meter converted = parsed(message);
  EXPECT_EQ(converted.path().value(), "/m/x");
  EXPECT_EQ(converted.value().values().at("value").doublevalue().value(), 2.5);
  EXPECT_EQ(resource.values.at("value").getDoubleValue(), 2.5);
  EXPECT_EQ(resource.values.size(), 5u);
}

TEST_F(WsMeterGroupTest, TheGeneratorKeepsTheReadingsType) {
  Resource flag{ResourceValue(false)};
  std::string message;
  WsMeterGroup::messageGenerator(upgradeRequest(), flag, session, message, "/m/ok");
  const protobuf::Meter converted = parsed(message);
  ASSERT_TRUE(converted.value().values().at("value").has_boolvalue());
  EXPECT_FALSE(converted.value().values().at("value").boolvalue().value());
  EXPECT_TRUE(converted.has_device());
}

}  // namespace
}  // namespace halvor::kelo::test
