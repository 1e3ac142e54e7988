#pragma once

#include <memory>
#include <string>

#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpTypes.h"
#include "kelo/web/WebSocketConnection.h"

namespace halvor::kelo::web {

// A WebSocket endpoint. One object serves all connections of its path; its callbacks run on the
// I/O thread of the connection concerned, so different connections call it concurrently.
class WebSocketControllerBase {
 public:
  virtual ~WebSocketControllerBase() = default;

  // Every Text and Binary message, and the client's Close (type Close, the message being the
  // reason). When the controller does not answer a Close with shutdown(), the layer answers it
  // with the client's code.
  virtual void handleNewMessage(const WebSocketConnectionPtr& conn, std::string&& message,
                                const WebSocketMessageType& type) = 0;
  // Once, right after the upgrade, with the upgrade request.
  virtual void handleNewConnection(const HttpRequestPtr& req,
                                   const WebSocketConnectionPtr& conn) = 0;
  // Exactly once per connection, at its end, whoever closed it.
  virtual void handleConnectionClosed(const WebSocketConnectionPtr& conn) = 0;
};

using WebSocketControllerPtr = std::shared_ptr<WebSocketControllerBase>;

}  // namespace halvor::kelo::web
