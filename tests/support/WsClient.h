#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace halvor::kelo::test {

// A small synchronous WebSocket client over plain TCP or TLS (certificates not verified). Every
// operation has a time limit; receive() returns nothing when it passes.
class WsClient {
 public:
  using Headers = std::vector<std::pair<std::string, std::string>>;
  struct Message {
    bool text = false;
    std::string data;
  };

  WsClient(std::string host, std::uint16_t port, bool tls = false);
  ~WsClient();
  WsClient(const WsClient&) = delete;
  WsClient& operator=(const WsClient&) = delete;

  void setTimeout(std::chrono::milliseconds timeout);
  // A small receive buffer, set before connect(), for clients that are meant not to keep up.
  void setReceiveBufferSize(int bytes);
  // Upgrade on `target` ("/ws/x?SessionID=1"), with extra headers such as a Cookie. Throws
  // std::runtime_error when the server refuses (the text holds the status).
  void connect(const std::string& target, const Headers& headers = {});

  void sendText(const std::string& text);
  void sendBinary(const std::string& data);
  // The next message; nothing on timeout or when the connection closed (see closeCode()).
  std::optional<Message> receive(std::chrono::milliseconds timeout);
  // Sends a close frame and waits for the server's answer; true when it came.
  bool close(std::uint16_t code = 1000, const std::string& reason = "");
  // Waits until the server closes; true when it did within `timeout`.
  bool waitForClose(std::chrono::milliseconds timeout);

  bool isOpen() const;
  // The code and reason of the server's close frame, once one arrived (0 when none).
  std::uint16_t closeCode() const;
  std::string closeReason() const;

 private:
  // One frame, Text or Binary, written within the time limit.
  void send(const std::string& payload, bool text);
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace halvor::kelo::test
