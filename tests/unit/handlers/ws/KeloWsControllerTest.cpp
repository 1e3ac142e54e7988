#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/controllers/KeloWsController.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/handlers/ws/WsResource.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

// An endpoint whose first step is whatever the test wants; it records the session it got.
class RecordingEndpoint : public KeloWsController<RecordingEndpoint, true> {
 public:
  static constexpr const char* kPath = "/ws/recording";

  void initialSetupAndMessage(const web::HttpRequestPtr& /*req*/,
                              const web::WebSocketConnectionPtr& /*conn*/,
                              std::string sessionId) override {
    receivedSession = sessionId;
    if (behaviour) behaviour();
  }
  std::optional<std::string> receivedSession;
  std::function<void()> behaviour;
};

class KeloWsControllerTest : public ::testing::Test {
 protected:
  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  RecordingEndpoint endpoint;
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(KeloWsControllerTest, CookieWinsOverQueryParameter) {
  endpoint.handleNewConnection(upgradeRequest("SessionID=fromQuery", "SessionID=fromCookie"), conn);
  ASSERT_TRUE(endpoint.receivedSession);
  EXPECT_EQ(*endpoint.receivedSession, "fromCookie");
}

TEST_F(KeloWsControllerTest, CookieWinsEvenOverAMalformedQuery) {
  // A query whose "SessionID" would decode to nothing shows that it was not consulted.
  endpoint.handleNewConnection(upgradeRequest("SessionID=%zz", "SessionID=abc"), conn);
  ASSERT_TRUE(endpoint.receivedSession);
  EXPECT_EQ(*endpoint.receivedSession, "abc");
}

TEST_F(KeloWsControllerTest, EmptyCookieCountsAsNoCookie) {
  endpoint.handleNewConnection(upgradeRequest("SessionID=fromQuery", "SessionID="), conn);
  ASSERT_TRUE(endpoint.receivedSession);
  EXPECT_EQ(*endpoint.receivedSession, "fromQuery");
}

TEST_F(KeloWsControllerTest, QueryValueIsUrlDecodedCookieValueIsNot) {
  endpoint.handleNewConnection(upgradeRequest("SessionID=a%2Bb%20c+d"), conn);
  ASSERT_TRUE(endpoint.receivedSession);
  EXPECT_EQ(*endpoint.receivedSession, "a+b c d");

  RecordingEndpoint second;
  second.handleNewConnection(upgradeRequest("", "SessionID=a%2Bb"), conn);
  ASSERT_TRUE(second.receivedSession);
  EXPECT_EQ(*second.receivedSession, "a%2Bb");
}

TEST_F(KeloWsControllerTest, NoSessionIdentityLeavesTheConnectionOpenAndSilent) {
  endpoint.handleNewConnection(upgradeRequest("other=1"), conn);
  EXPECT_FALSE(endpoint.receivedSession);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_TRUE(conn->connected());
  EXPECT_EQ(log.count(el::Level::Error, "Error sending initial message: "), 1u);
  EXPECT_EQ(log.count(el::Level::Error, "Request missing query parameter: SessionID."), 1u);
}

TEST_F(KeloWsControllerTest, UnknownSessionClosesWith1011) {
  endpoint.behaviour = [] {
    throw tavelabi::NonExistentSessionException("Session nope does not exist");
  };
  endpoint.handleNewConnection(upgradeRequest("SessionID=nope"), conn);
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1011);
  EXPECT_EQ(conn->shutdownCalls()[0].reason, "Invalid session ID.");
  EXPECT_EQ(log.count(el::Level::Error, "Invalid Session ID: "), 1u);
  EXPECT_EQ(log.count(el::Level::Error, "Session nope does not exist"), 1u);
}

TEST_F(KeloWsControllerTest, OtherFailureOfTheFirstStepKeepsTheConnectionOpen) {
  endpoint.behaviour = [] { throw std::logic_error("renderer broke"); };
  endpoint.handleNewConnection(upgradeRequest("SessionID=s"), conn);
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_EQ(log.count(el::Level::Error, "Error sending initial message: "), 1u);
  EXPECT_EQ(log.count(el::Level::Error, "renderer broke"), 1u);
}

TEST_F(KeloWsControllerTest, TextAndBinaryFramesOnADataEndpointProduceNothing) {
  WsResource resource;
  resource.handleNewMessage(conn, "hello", web::WebSocketMessageType::Text);
  resource.handleNewMessage(conn, std::string("\x01\x02", 2), web::WebSocketMessageType::Binary);
  EXPECT_TRUE(conn->sent().empty());
  EXPECT_TRUE(conn->shutdownCalls().empty());
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(KeloWsControllerTest, ClientCloseIsAnsweredWith1000AndAnEmptyReason) {
  endpoint.handleNewMessage(conn, "bye", web::WebSocketMessageType::Close);
  ASSERT_EQ(conn->shutdownCalls().size(), 1u);
  EXPECT_EQ(conn->shutdownCalls()[0].code, 1000);
  EXPECT_EQ(conn->shutdownCalls()[0].reason, "");
  EXPECT_EQ(log.count(el::Level::Debug, "Client requested close."), 1u);
}

TEST_F(KeloWsControllerTest, ConnectionClosedLogsBothAddressesAndUnsubscribes) {
  auto peer = std::make_shared<FakeConnection>("10.0.0.5", 41312, "10.0.0.1", 7000);
  unitHost.manager().addListenerAndClient(upgradeRequest(), peer, &WsResource::messageGenerator,
                                          "/x", "s");
  ASSERT_EQ(unitHost.manager().getListeners().size(), 1u);
  endpoint.handleConnectionClosed(peer);
  EXPECT_EQ(
      log.count(el::Level::Debug, "handleConnectionClosed() is called for 10.0.0.1 -> 10.0.0.5"),
      1u);
  EXPECT_TRUE(unitHost.manager().getListeners().empty());
}

TEST_F(KeloWsControllerTest, RegistrationServesTheEndpointUnderTheVersionPrefixForGetOnly) {
  web::HttpAppFramework application;
  FamilyRoutes::add<RecordingEndpoint>(application);
  const auto handlers = application.getHandlersInfo();
  ASSERT_EQ(handlers.size(), 1u);
  EXPECT_EQ(std::get<0>(handlers[0]), "/1/ws/recording");
  EXPECT_EQ(std::get<1>(handlers[0]), web::Get);
  EXPECT_EQ(std::get<2>(handlers[0]), "RecordingEndpoint");
}

}  // namespace
}  // namespace halvor::kelo::test
