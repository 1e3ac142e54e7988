#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "kelo/web/HttpTypes.h"
#include "kelo/web/InetAddress.h"

namespace halvor::kelo::web {

class WebSocketConnection;
using WebSocketConnectionPtr = std::shared_ptr<WebSocketConnection>;

// One upgraded connection. Every member is safe to call from any thread: sends are posted to the
// connection's own I/O thread and queued there, one write at a time. Calls after the connection
// closed do nothing.
class WebSocketConnection {
 public:
  virtual ~WebSocketConnection() = default;

  virtual void send(const std::string& message,
                    WebSocketMessageType type = WebSocketMessageType::Text) = 0;
  virtual void send(const char* data, std::size_t length,
                    WebSocketMessageType type = WebSocketMessageType::Text) = 0;
  // The same as send(*message, type), for a message that several connections send: a connection
  // may queue `message` itself instead of a copy, so it must not change afterwards.
  virtual void sendShared(std::shared_ptr<const std::string> message,
                          WebSocketMessageType type = WebSocketMessageType::Text) {
    send(*message, type);
  }
  // Starts the close handshake with `code` and `reason`, after the frames already queued.
  virtual void shutdown(std::uint16_t code = kNormalClosure, const std::string& reason = "") = 0;
  // Closes the socket without a handshake.
  virtual void forceClose() = 0;
  // True from the upgrade until the connection starts closing.
  virtual bool connected() const = 0;
  bool disconnected() const { return !connected(); }

  virtual const InetAddress& peerAddr() const = 0;
  virtual const InetAddress& localAddr() const = 0;
};

}  // namespace halvor::kelo::web
