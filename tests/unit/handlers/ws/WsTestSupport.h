#pragma once

#include <easylogging++.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kelo/Kelo.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/WebSocketConnection.h"
#include "sim/SimTavel.h"
#include "support/Requests.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo::test {

// A connection that records what the code under test does to it.
class FakeConnection : public web::WebSocketConnection {
 public:
  struct Frame {
    std::string data;
    web::WebSocketMessageType type;
  };
  struct Shutdown {
    std::uint16_t code;
    std::string reason;
  };

  explicit FakeConnection(const std::string& peerIp = "127.0.0.1", std::uint16_t peerPort = 40001,
                          const std::string& localIp = "127.0.0.1", std::uint16_t localPort = 7000)
      : peer(peerIp, peerPort), local(localIp, localPort) {}

  void send(const std::string& message, web::WebSocketMessageType type) override {
    send(message.data(), message.size(), type);
  }
  void send(const char* data, std::size_t length, web::WebSocketMessageType type) override {
    if (throwOnSend) throw std::runtime_error("send failed on purpose");
    std::lock_guard<std::mutex> lock(mutex);
    frames.push_back({std::string(data, length), type});
  }
  // Records which buffer was handed over, then sends it as any other message.
  void sendShared(std::shared_ptr<const std::string> message,
                  web::WebSocketMessageType type) override {
    {
      std::lock_guard<std::mutex> lock(mutex);
      buffers.push_back(message);
    }
    send(*message, type);
  }
  void shutdown(std::uint16_t code, const std::string& reason) override {
    std::lock_guard<std::mutex> lock(mutex);
    shutdowns.push_back({code, reason});
    open = false;
  }
  void forceClose() override { open = false; }
  bool connected() const override { return open.load(); }
  const web::InetAddress& peerAddr() const override { return peer; }
  const web::InetAddress& localAddr() const override { return local; }

  std::vector<Frame> sent() const {
    std::lock_guard<std::mutex> lock(mutex);
    return frames;
  }
  // The buffers that came through sendShared, in order.
  std::vector<std::shared_ptr<const std::string>> sharedBuffers() const {
    std::lock_guard<std::mutex> lock(mutex);
    return buffers;
  }
  std::vector<Shutdown> shutdownCalls() const {
    std::lock_guard<std::mutex> lock(mutex);
    return shutdowns;
  }

  std::atomic<bool> open{true};
  std::atomic<bool> throwOnSend{false};

 private:
  web::InetAddress peer;
  web::InetAddress local;
  mutable std::mutex mutex;
  std::vector<Frame> frames;
  std::vector<std::shared_ptr<const std::string>> buffers;
  std::vector<Shutdown> shutdowns;
};

// Every line written to one easylogging++ logger, with its level.
class LogCapture {
 public:
  struct Line {
    el::Level level;
    std::string text;
  };
  explicit LogCapture(std::string loggerId);
  ~LogCapture();

  std::vector<Line> lines() const;
  // Lines of `level` that contain `part`.
  std::size_t count(el::Level level, const std::string& part) const;
  std::size_t count(const std::string& part) const;
  void clear();

  class Callback;

 private:
  std::string loggerId;
};

// The host and the plug-in's web plug-ins, without a server: a SimTavel with the connectivity
// table and the localhost list, a Kelo object as the plug-in's identity (logger, session), and
// the process-wide application's WebKeloInterface and ResourceListenerManager pointed at them.
class WsUnitHost {
 public:
  static constexpr const char* kLoggerId = "WsUnitTest";
  static constexpr const char* kConnectivities = "/kelo/websocketConnectivities";

  WsUnitHost();
  ~WsUnitHost();

  sim::SimTavel& host() { return *tavel; }
  Kelo& plugin() { return *kelo; }
  ResourceListenerManager& manager();
  // A logged-in session of the administrator "admin".
  std::string openSession(const std::string& user = "admin");

  // The connectivity table as the host holds it.
  tavelabi::ResourceValue::Map connectivities();
  void setConnectivity(const std::string& ip, int count);
  void clearConnectivities();

  // Host-side Create/Update/Delete/Read of a resource of one value, then waits until the
  // listeners had it.
  void hostAction(tavelabi::CCRUD verb, const std::string& path,
                  const tavelabi::Resource& resource = tavelabi::Resource());
  void update(const std::string& path, int value);

 private:
  std::unique_ptr<sim::SimTavel> tavel;
  std::unique_ptr<Kelo> kelo;
};

// The Int32 "value" of a binary halvor::protobuf::Resource frame.
int valueOfResourceFrame(const std::string& frame);

}  // namespace halvor::kelo::test
