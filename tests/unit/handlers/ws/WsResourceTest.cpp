#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/handlers/ws/WsResource.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;

class WsResourceTest : public ::testing::Test {
 protected:
  WsResourceTest() {
    unitHost.setConnectivity("127.0.0.1", 5);
    unitHost.hostAction(CCRUD::Create, "/tx/power",
                        tavelabi::Resource(tavelabi::ResourceValue(40)));
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  WsResource endpoint;
  std::string session = unitHost.openSession();
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsResourceTest, FirstMessageIsTheCurrentResourceThenEveryChange) {
  endpoint.handleNewConnection(upgradeRequest("path=%2Ftx%2Fpower", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  EXPECT_EQ(valueOfResourceFrame(conn->sent()[0].data), 40);
  ASSERT_EQ(unitHost.manager().getListeners().count("/tx/power"), 1u);

  unitHost.update("/tx/power", 41);
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(valueOfResourceFrame(conn->sent()[1].data), 41);
}

TEST_F(WsResourceTest, MissingPathIsLoggedAndNothingIsSent) {
  endpoint.handleNewConnection(upgradeRequest("SessionID=" + session), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Request missing query parameter: path."), 1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsResourceTest, UnknownSessionIsClosedWith1011BeforeAnyFrame) {
  endpoint.handleNewConnection(upgradeRequest("path=/tx/power&SessionID=unknown"), conn);
  EXPECT_TRUE(conn->sent().empty());
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1011);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsResourceTest, UnknownPathIsAnErrorLineWithoutFrameOrSubscription) {
  endpoint.handleNewConnection(upgradeRequest("path=/nowhere", "SessionID=" + session), conn);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Error sending initial message: "), 1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(WsResourceTest, GeneratorChecksTheSessionWithAReadThatIsNotActivity) {
  auto req = upgradeRequest();
  tavelabi::Resource resource(tavelabi::ResourceValue(std::string("text")));
  std::string message;
  WsResource::messageGenerator(req, resource, session, message, "/tx/power");
  protobuf::Resource parsed;
  ASSERT_TRUE(parsed.ParseFromString(message));
  EXPECT_EQ(parsed.values().at("value").stringvalue().value(), "text");
  // The host's resource is left as it was.
  EXPECT_EQ(resource.values.at("value").getStringValue(), "text");

  std::string ignored;
  EXPECT_THROW(WsResource::messageGenerator(req, resource, "dead", ignored, "/tx/power"),
               tavelabi::NonExistentSessionException);
}

TEST_F(WsResourceTest, ReadsOfTheEndpointDoNotKeepASessionAlive) {
  unitHost.host().setSessionTimeout(std::chrono::milliseconds(300));
  const std::string pushedOnly = unitHost.openSession();
  const std::string active = unitHost.openSession();
  auto req = upgradeRequest();
  tavelabi::Resource resource(tavelabi::ResourceValue(1));
  std::string message;
  // 480 ms of renderings for one session and of ordinary reads for the other.
  for (int i = 0; i < 6; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(80));
    if (i < 2) WsResource::messageGenerator(req, resource, pushedOnly, message, "/tx/power");
    tavelabi::ResourceAction read(CCRUD::Read, "/tx/power", &unitHost.plugin(), active);
    unitHost.host().processResourceAction(read);
  }
  EXPECT_THROW(WsResource::messageGenerator(req, resource, pushedOnly, message, "/tx/power"),
               tavelabi::NonExistentSessionException);
  EXPECT_NO_THROW(WsResource::messageGenerator(req, resource, active, message, "/tx/power"));
}

}  // namespace
}  // namespace halvor::kelo::test
