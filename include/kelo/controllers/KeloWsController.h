#pragma once

#include <string>

#include "kelo/controllers/KeloWsFrame.h"
#include "kelo/controllers/RouteTable.h"
#include "kelo/web/WebSocketControllerBase.h"

namespace halvor::kelo {

// What every WebSocket endpoint shares: the session identity of the upgrade request, the hand-over
// to the endpoint for its first message and subscription, the client's close, and the clean-up
// at the end. An endpoint T derives from KeloWsController<T, true>, names its path in kPath and
// implements initialSetupAndMessage; endpoints of the common shape derive from KeloWsEndpoint
// instead. The object holds no per-connection state; one object serves all connections of its
// path, concurrently on the I/O threads.
template <class T, bool AutoCreation = true>
class KeloWsController : public web::WebSocketControllerBase {
 public:
  using Self = T;

  static void declareRoutes(RouteTable<T>& routes) { routes.addWebSocket(T::kPath); }

  void handleNewMessage(const web::WebSocketConnectionPtr& conn, std::string&& /*message*/,
                        const web::WebSocketMessageType& type) override {
    // No other frame a client sends on a data endpoint has a meaning.
    if (type == web::WebSocketMessageType::Close) {
      KeloWsFrame::answerClose(conn);
    }
  }

  void handleNewConnection(const web::HttpRequestPtr& req,
                           const web::WebSocketConnectionPtr& conn) override {
    KeloWsFrame::openConnection(req, conn, [this, &req, &conn](const std::string& sessionId) {
      initialSetupAndMessage(req, conn, sessionId);
    });
  }

  void handleConnectionClosed(const web::WebSocketConnectionPtr& conn) override {
    KeloWsFrame::logClosed(conn);
    cleanUpConnection(conn);
  }

  // Sends the endpoint's first message and subscribes the connection, or throws.
  virtual void initialSetupAndMessage(const web::HttpRequestPtr& req,
                                      const web::WebSocketConnectionPtr& conn,
                                      std::string sessionId) = 0;

  virtual void cleanUpConnection(const web::WebSocketConnectionPtr& conn) {
    KeloWsFrame::removeClient(conn);
  }
};

}  // namespace halvor::kelo
